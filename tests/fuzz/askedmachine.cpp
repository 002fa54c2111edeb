// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/askedmachine.h"

#include <numeric>
#include <utility>

#include "host/collectors/queryrun.h"
#include "host/machine/machine.h"
#include "host/recording/record.h"
#include "tests/fuzz/collectorsinside.h"
#include "velhost/schema.h"

namespace fuzz {

using velhost::MachineFile;

bool isSmall(const MachineFile& machine) {
  constexpr std::int64_t kMostRecords = 64;
  constexpr std::size_t kMostStructures = 256;
  const auto& sp = machine.sp;
  const std::int64_t components =
      std::accumulate(sp.components.begin(), sp.components.end(), std::int64_t{0},
                      [](std::int64_t sum, const auto& row) { return sum + row.second; });
  const std::size_t structures = machine.smbios ? machine.smbios->structures.size() : 0;
  return sp.count <= 8 && sp.bmcNodes <= 8 && components <= kMostRecords &&
         structures <= kMostStructures && machine.instances.size() <= kMostStructures;
}

velhost::Findings ask(MachineFile machine) {
  machine.sp.latency = {};
  auto collectors = collectorsOf(machine);
  velhost::QueryRun run(velhost::describedMachine(std::move(machine)),
                        {.collectors = std::move(collectors),
                         .keepLogs = true,
                         .keepTraffic = true,
                         .onCoreLog = {},
                         .keepSteps = true});
  const auto classes = run.defaultClasses();
  auto result = run.request(classes, true);
  return {run.context(), std::move(result)};
}

MachineFile recorded(MachineFile machine, bool redacted) {
  machine.sp.latency = {};
  auto collectors = collectorsOf(machine);
  return record(velhost::describedMachine(std::move(machine)), {std::move(collectors), redacted})
      .machine;
}

void useSchema() { NKRXVEL20::host::setSchema(NKRXVEL20::host::readSchema(SCHEMA_DIR)); }

}  // namespace fuzz
