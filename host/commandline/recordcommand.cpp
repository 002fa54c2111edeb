// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/askedmachine.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/machine/machinewriter.h"
#include "host/progress/progressdisplay.h"
#include "host/recording/record.h"

namespace velhost {
namespace {

Recording recordShown(Machine machine, const RecordOptions& options) {
  const ProgressDisplay progress;
  return record(std::move(machine), options);
}

}  // namespace

int run(const RecordCommand& command) {
  useSchema(programFolder());
  Machine machine = machineOf(command);
  const Unreadable unreadable(machine);
  const auto output = outputOf(command, {.isPrivate = true, .mayReplace = command.force});
  auto collectors = collectorFiles(command.plugins, machine, programFolder());
  giveUpRoot(collectors, output);
  const Recording recording =
      recordShown(std::move(machine), {std::move(collectors), command.redact});
  unreadable.tellRefused();
  const bool answered = complainOfFailures(recording);
  unreadable.tellSilence();
  print(output, machineFileText(recording.machine));
  return unreadable.status(answered);
}

}  // namespace velhost
