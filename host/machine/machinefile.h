// SPDX-License-Identifier: Apache-2.0
//
// Machine files ("vel-machine/1"): everything that a collector can ask of one machine.
// docs/machine-file.md describes the format.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/inputerror.h"
#include "velhost/cimnamespace.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {

// An instance that another collector has published.
struct Companion {
  std::string className;
  NKRXVEL20::host::PropertyList properties;
};

struct MachineFile {
  std::string name;
  std::string description;
  std::optional<std::string> machineType;
  std::optional<NKRXVEL20::host::SmbiosTable> smbios;
  NKRXVEL20::host::SimulatedSP sp;  // without a section of its own: no SP, no BMC
  std::vector<Companion> instances;
  std::vector<std::string> givenClasses;  // the keys of "instances"
  std::vector<std::string> collectors;    // other collectors that run on the machine
  std::vector<std::string> missingClasses;
  std::vector<NKRXVEL20::host::Fault> faults;
};

// what() is one line: "FILE: POINTER: what is wrong", for a text that is no JSON
// "FILE:LINE:COLUMN: what is wrong".
class MachineFileError : public InputError {
 public:
  using InputError::InputError;
};

// No machine file, and nothing wrong: their JSON Schema may lie among them.
class JsonSchemaFound : public MachineFileError {
 public:
  using MachineFileError::MachineFileError;
};

// The name that stands for standard input.
inline constexpr char kStandardInput[] = "-";

// A machine file, or a DMI dump as `dmidecode --dump-bin` writes it, which is a machine of that
// firmware table and of its file's name. Throws MachineFileError.
MachineFile readMachineFile(const std::filesystem::path& file);

// What messages call the file.
std::string machineFileName(const std::filesystem::path& file);

// The bytes of a file that a person named. Throws MachineFileError.
std::string readInput(const std::filesystem::path& file);

bool isDump(std::string_view text);

// A machine file or dump that was read already; `file` is what messages call it, and where its own
// files are looked for. Throws MachineFileError.
MachineFile parseMachineFile(std::string_view text, const std::filesystem::path& file);

}  // namespace velhost
