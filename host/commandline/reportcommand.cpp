// SPDX-License-Identifier: Apache-2.0
#include <exception>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/files/outputfile.h"
#include "host/machine/machinefile.h"
#include "host/report/reportpage.h"
#include "host/results/findings.h"

namespace velhost {

// One file after the other: one that is bad is told, here and on the page, and keeps no other from being
// shown.
int run(const ReportCommand& command) {
  const auto programs = programFolder();
  useSchema(programs);
  OutputFile output(*command.output);
  ReportPage page;
  std::size_t unread = 0;
  for (const auto& file : command.files) {
    const std::string name = machineFileName(file.filename());
    try {
      page.add(findingsOf(file, programs, NKRXVEL20::host::Traffic::kKept), name);
    } catch (const std::exception& error) {
      complain(error.what());
      page.addUnread(name, error.what());
      ++unread;
    }
  }
  if (unread < command.files.size()) output.write(page.text());
  return unread == 0 ? kAnswered : kBadInput;
}

}  // namespace velhost
