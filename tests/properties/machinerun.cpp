// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/machinerun.h"

#include "host/collectors/collectorfiles.h"
#include "host/collectors/emptyclasses.h"
#include "host/collectors/queryrun.h"
#include "host/formats/resultdocument.h"
#include "host/machine/machine.h"
#include "host/machine/machinewriter.h"
#include "host/recording/record.h"

namespace velhost::properties {
namespace {

Machine machineOf(const std::string& text) {
  return describedMachine(parseMachineFile(text, "random.json"));
}

CollectorFiles collectorsOf(const Machine& machine) {
  return collectorFiles({}, machine, PROGRAM_FOLDER);
}

RunOptions optionsFor(const Machine& machine) {
  RunOptions options;
  options.collectors = collectorsOf(machine);
  options.keepLogs = options.keepTraffic = true;
  return options;
}

}  // namespace

Requests queried(const std::string& machine, int requests) {
  Machine described = machineOf(machine);
  RunOptions options = optionsFor(described);
  QueryRun run(std::move(described), std::move(options));
  ResultDocument document(run.context());
  Requests made;
  for (int i = 0; i < requests; ++i) {
    QueryResult result = run.request(run.defaultClasses(), i == 0);
    leaveOutEmpty(run.companionClasses(), EmptyClasses::kLeftOut, result);
    document.add(result);
    made.results.push_back(std::move(result));
  }
  made.document = document.text();
  return made;
}

std::string recorded(const std::string& machine, bool redact) {
  Machine described = machineOf(machine);
  const CollectorFiles collectors = collectorsOf(described);
  return machineFileText(record(std::move(described), {collectors, redact}).machine);
}

}  // namespace velhost::properties
