// SPDX-License-Identifier: Apache-2.0
#include "host/machine.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace velhost {
namespace {

std::string hostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return "localhost";
  return name.data();
}

std::string remedy(int error) {
  const bool forbidden = error == EACCES || error == EPERM;
  return forbidden ? "run velhost as root, or name a machine file with --machine FILE"
                   : "this system shows none; name a machine file with --machine FILE";
}

}  // namespace

Machine machineOfFile(const std::filesystem::path& file) {
  MachineFile described = readMachineFile(file);
  Machine machine;
  machine.source = "file";
  machine.name = std::move(described.name);
  machine.machineType = std::move(described.machineType);
  machine.smbios = std::move(described.smbios);
  machine.sp = NKRXVEL20::host::makeSimulatedSP(std::move(described.sp));
  machine.companions = std::move(described.instances);
  machine.missingClasses = std::move(described.missingClasses);
  machine.faults = std::move(described.faults);
  return machine;
}

Machine liveMachine(const std::filesystem::path& smbiosFolder) {
  Machine machine;
  machine.source = "live";
  machine.name = hostName();
  machine.sp = NKRXVEL20::host::makeSimulatedSP({});
  try {
    machine.smbios = NKRXVEL20::host::readLiveTables(smbiosFolder);
  } catch (const NKRXVEL20::host::LiveSmbiosError& error) {
    machine.unreadable.push_back(std::string("cannot read the SMBIOS tables: ") + error.what() +
                                 "; " + remedy(error.error));
  }
  return machine;
}

}  // namespace velhost
