// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorfiles.h"
#include "host/collectors/collectorset.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/formats/collectorlist.h"

namespace velhost {

int run(const CollectorsCommand& /*command*/) {
  useSchema(programFolder());
  CollectorSet collectors({.loaded = {}, .onDemand = pluginsIn(collectorsFolder(programFolder()))});
  collectors.loadAll();
  writeStandardOutput(collectorList(collectors, standardOutputScreen()));
  const auto failures = collectors.takeFailures();
  for (const std::string& line : failures) complain(line);
  return failures.empty() ? kAnswered : kRefused;
}

}  // namespace velhost
