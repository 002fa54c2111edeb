// SPDX-License-Identifier: Apache-2.0
//
// What the commands that ask a machine share: the machine, where the answer goes, and what of a live
// machine could not be read.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/collectors/collectorset.h"
#include "host/commandline/commands.h"
#include "host/files/outputfile.h"
#include "host/machine/machine.h"

namespace velhost {

// The machine of the command's file, without one the live one.
template <class Command>
Machine machineOf(const Command& command) {
  return command.machine ? machineOfFile(*command.machine) : liveMachine();
}

// Null: standard output.
template <class Command>
std::unique_ptr<OutputFile> outputOf(const Command& command, FileRules rules) {
  return command.output ? std::make_unique<OutputFile>(*command.output, rules) : nullptr;
}

// What needs root is open: the machine, the schema and the place of the answer. A file that is going to
// take its place in a folder of root's needs root to the end.
void giveUpRoot(const CollectorFiles& collectors, const std::unique_ptr<OutputFile>& output);

void print(const std::unique_ptr<OutputFile>& file, std::string_view text);

// Tells what of the live machine cannot be read: at once what was refused, and when it was asked
// that its BMC did not answer.
class Unreadable {
 public:
  explicit Unreadable(const Machine& machine)
      : refused_(machine.unreadable), silence_(machine.silence) {}

  void tellRefused() const;
  void tellSilence() const;
  bool isAny() const { return !refused_.empty() || isSilent(); }
  ExitStatus status(bool answered) const;

 private:
  bool isSilent() const { return silence_ && *silence_; }

  std::vector<std::string> refused_;
  std::shared_ptr<const std::optional<NKRXVEL20::host::SilentBmc>> silence_;
};

}  // namespace velhost
