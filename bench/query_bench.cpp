// SPDX-License-Identifier: Apache-2.0
//
// How long a request takes that collects, and one that publishes again.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "host/queryrun.h"

namespace {

velhost::QueryRun loadOn(const char* machine) {
  return {velhost::machineOfFile(std::filesystem::path(MACHINES_DIR) / machine),
          {.plugin = PLUGIN_FILE, .keepLogs = false, .keepTraffic = false, .onCoreLog = {}}};
}

// A load each time: what is collected stays in the plug-in object.
void loadAndCollect(benchmark::State& state, const char* machine) {
  for (auto _ : state) {
    auto run = loadOn(machine);
    benchmark::DoNotOptimize(run.request(velhost::defaultClasses(), true));
  }
}

void publishAgain(benchmark::State& state, const char* machine) {
  auto run = loadOn(machine);
  run.request(velhost::defaultClasses(), true);
  for (auto _ : state) {
    benchmark::DoNotOptimize(run.request(velhost::defaultClasses(), false));
  }
}

BENCHMARK_CAPTURE(loadAndCollect, no_sp, "no-sp-two-oem-structures.json");
BENCHMARK_CAPTURE(loadAndCollect, two_nodes, "two-nodes.json");
BENCHMARK_CAPTURE(loadAndCollect, eight_nodes, "eight-nodes.json");
BENCHMARK_CAPTURE(publishAgain, two_nodes, "two-nodes.json");
BENCHMARK_CAPTURE(publishAgain, eight_nodes, "eight-nodes.json");

}  // namespace
