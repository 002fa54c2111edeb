// SPDX-License-Identifier: Apache-2.0
//
// How long a request takes that collects, one that publishes again, and reading the schema.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "host/collectors/queryrun.h"
#include "velhost/schema.h"

namespace {

// What each start of the program costs.
void readSchema(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(NKRXVEL20::host::readSchema(SCHEMA_DIR));
}

void useSchema(const benchmark::State&) {
  static const bool isRead =
      (NKRXVEL20::host::setSchema(NKRXVEL20::host::readSchema(SCHEMA_DIR)), true);
  static_cast<void>(isRead);
}

velhost::QueryRun loadOn(const char* machine) {
  return {velhost::machineOfFile(std::filesystem::path(MACHINES_DIR) / machine),
          {.collectors = {{PLUGIN_FILE}, {}},
           .keepLogs = false,
           .keepTraffic = false,
           .onCoreLog = {}}};
}

// A load each time: what is collected stays in the plug-in object.
void loadAndCollect(benchmark::State& state, const char* machine) {
  for (auto _ : state) {
    auto run = loadOn(machine);
    benchmark::DoNotOptimize(run.request(run.defaultClasses(), true));
  }
}

void publishAgain(benchmark::State& state, const char* machine) {
  auto run = loadOn(machine);
  run.request(run.defaultClasses(), true);
  for (auto _ : state) {
    benchmark::DoNotOptimize(run.request(run.defaultClasses(), false));
  }
}

BENCHMARK(readSchema);
BENCHMARK_CAPTURE(loadAndCollect, no_sp, "no-sp-two-oem-structures.json")->Setup(useSchema);
BENCHMARK_CAPTURE(loadAndCollect, two_nodes, "two-nodes.json")->Setup(useSchema);
BENCHMARK_CAPTURE(loadAndCollect, eight_nodes, "eight-nodes.json")->Setup(useSchema);
BENCHMARK_CAPTURE(publishAgain, two_nodes, "two-nodes.json")->Setup(useSchema);
BENCHMARK_CAPTURE(publishAgain, eight_nodes, "eight-nodes.json")->Setup(useSchema);

}  // namespace
