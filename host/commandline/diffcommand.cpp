// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <utility>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/comparison/comparison.h"
#include "host/comparison/diffjson.h"
#include "host/comparison/difftable.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/machine/machinefile.h"
#include "host/results/findings.h"

namespace velhost {
namespace {

enum Difference : int { kSame = 0, kDifferent = 1, kTrouble = 2 };

int compare(const DiffCommand& command) {
  if (command.before == kStandardInput && command.after == kStandardInput) {
    throw InputError("standard input cannot be both files");
  }
  const auto programs = programFolder();
  useSchema(programs);
  const Findings before = findingsOf(command.before, programs);
  const Findings after = findingsOf(command.after, programs);
  const Comparison comparison = compared(before, after);
  const ComparedFile old{machineFileName(command.before), before};
  const ComparedFile now{machineFileName(command.after), after};
  writeStandardOutput(command.format == Format::kJson
                          ? differenceJson(old, now, comparison)
                          : differenceTable(old, now, comparison, standardOutputScreen().width));
  return comparison.isDifferent() ? kDifferent : kSame;
}

}  // namespace

// Whatever goes wrong: 1 says that they are different.
int run(const DiffCommand& command) {
  try {
    return compare(command);
  } catch (const std::exception& error) {
    complain(error.what());
    return kTrouble;
  }
}

}  // namespace velhost
