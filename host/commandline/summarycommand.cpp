// SPDX-License-Identifier: Apache-2.0
#include <exception>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/comparison/levelsummary.h"
#include "host/comparison/summarytext.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/machine/machinefile.h"
#include "host/results/findings.h"

namespace velhost {
namespace {

std::string textOf(Format format, const LevelSummary& summary, std::size_t unread) {
  if (format == Format::kJson) return summaryJson(summary, unread);
  if (format == Format::kCsv) return summaryCsv(summary);
  return summaryTable(summary, unread, standardOutputScreen().width);
}

}  // namespace

// One file after the other: a file that is bad is told and keeps no other from being summed up.
int run(const SummaryCommand& command) {
  const auto programs = programFolder();
  useSchema(programs);
  LevelCounter counter;
  std::size_t unread = 0;
  for (const auto& file : command.files) {
    try {
      counter.add(findingsOf(file, programs), machineFileName(file));
    } catch (const std::exception& error) {
      complain(error.what());
      ++unread;
    }
  }
  writeStandardOutput(textOf(command.format, counter.summary(), unread));
  return unread == 0 ? kAnswered : kBadInput;
}

}  // namespace velhost
