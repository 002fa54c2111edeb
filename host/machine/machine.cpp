// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machine.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "host/machine/refusedsource.h"
#include "velhost/smbios.h"

namespace velhost {

namespace host = NKRXVEL20::host;

namespace {

std::string hostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return "localhost";
  return name.data();
}

bool isForbidden(int error) { return error == EACCES || error == EPERM; }

}  // namespace

Machine machineOfFile(const std::filesystem::path& file) {
  return describedMachine(readMachineFile(file));
}

Machine describedMachine(MachineFile described) {
  Machine machine;
  machine.source = "file";
  machine.name = std::move(described.name);
  machine.description = std::move(described.description);
  machine.machineType = std::move(described.machineType);
  machine.smbios = std::move(described.smbios);
  machine.sp = host::makeSimulatedSP(std::move(described.sp));
  machine.companions = std::move(described.instances);
  machine.givenClasses = std::move(described.givenClasses);
  machine.collectors = std::move(described.collectors);
  machine.missingClasses = std::move(described.missingClasses);
  machine.faults = std::move(described.faults);
  return machine;
}

Machine liveMachine(const std::filesystem::path& smbiosFolder, host::LiveIpmi ipmi) {
  Machine machine;
  machine.source = "live";
  machine.name = hostName();
  RefusedSources& refused = machine.refused;
  try {
    machine.smbios = host::readLiveTables(smbiosFolder);
  } catch (const host::LiveSmbiosError& error) {
    refused.smbios = {error.what(), isForbidden(error.error)};
  }
  machine.sp = std::move(ipmi.library);
  machine.silence = std::move(ipmi.silence);
  if (!ipmi.refusedDevice.empty()) {
    refused.ipmi = {ipmi.refusedDevice + ": Permission denied", true};
  }
  std::vector<RefusedSource> all;
  for (const auto& source : {refused.smbios, refused.ipmi}) {
    if (source) all.push_back(*source);
  }
  if (!all.empty()) machine.unreadable.push_back(refusalLine(all));
  return machine;
}

Machine liveMachine() { return liveMachine(host::kLiveTableFolder, host::makeLiveIpmi()); }

}  // namespace velhost
