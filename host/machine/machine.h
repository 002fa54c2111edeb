// SPDX-License-Identifier: Apache-2.0
//
// The machine that a query is about: one that a file describes, or the one that runs the program.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/machine/machinefile.h"
#include "host/machine/refusedsource.h"
#include "vel/splibrary.h"
#include "velhost/spdriver.h"

namespace velhost {

struct Machine {
  std::string source;  // "file" or "live"
  std::string name;
  std::string description;  // of a file
  std::optional<std::string> machineType;
  std::optional<NKRXVEL20::host::SmbiosTable> smbios;
  std::unique_ptr<NKRXVEL20::SPLibrary> sp;
  std::vector<Companion> companions;
  std::vector<std::string> givenClasses;  // of which the file gives the instances, if only none
  std::vector<std::string> collectors;    // that a file lists besides the firmware collector
  std::vector<std::string> missingClasses;
  std::vector<NKRXVEL20::host::Fault> faults;
  RefusedSources refused;               // of the live machine
  std::vector<std::string> unreadable;  // lines that say what to do about it
  // Of the live machine: that its BMC owes an answer, as soon as it does.
  std::shared_ptr<const std::optional<NKRXVEL20::host::SilentBmc>> silence;
};

// Throws MachineFileError.
Machine machineOfFile(const std::filesystem::path& file);

// The machine that a file describes, read already.
Machine describedMachine(MachineFile described);

// The machine that the program runs on.
Machine liveMachine();

// The same from given sources; `smbiosFolder` is where the kernel shows the SMBIOS tables.
Machine liveMachine(const std::filesystem::path& smbiosFolder, NKRXVEL20::host::LiveIpmi ipmi);

}  // namespace velhost
