// SPDX-License-Identifier: Apache-2.0
//
// The plug-in: loading it, Init, one whole collection, publication. Beside each collection its floor:
// the same calls of the platform, made without the plug-in in between.
#include <benchmark/benchmark.h>

#include <map>
#include <string>

#include "bench/allocations.h"
#include "bench/usedschema.h"
#include "tests/support/platformcalls.h"
#include "tests/support/pluginonmachine.h"
#include "velhost/spdriver.h"

namespace {

using velhost::PlatformCalls;
using velhost::PluginOnMachine;

std::string machineFile(const std::string& size) { return MACHINES_DIR "/" + size + ".json"; }

// Listed once for each machine: Google Benchmark begins each benchmark several times.
const PlatformCalls& callsOn(const std::string& size) {
  static std::map<std::string, PlatformCalls> known;
  const auto found = known.find(size);
  if (found != known.end()) return found->second;
  return known[size] = velhost::withoutLog(velhost::callsOfCollection(machineFile(size)));
}

// What was done for each property that is set.
void tell(benchmark::State& state, const PlatformCalls& calls, std::size_t allocations) {
  const auto properties = static_cast<double>(velhost::numberOf<velhost::PropertySet>(calls));
  const auto rounds = static_cast<double>(state.iterations());
  state.counters["properties"] = properties;
  state.counters["sends"] = static_cast<double>(velhost::numberOf<velhost::DotCommandSent>(calls));
  state.counters["new/property"] = static_cast<double>(allocations) / rounds / properties;
}

// Runs the step again and again; what lies between two of them is not measured.
template <typename Step, typename Between>
void measure(benchmark::State& state, const PlatformCalls& calls, Step step, Between between) {
  std::size_t allocations = 0;
  for (auto _ : state) {
    const std::size_t before = bench::allocations();
    step();
    allocations += bench::allocations() - before;
    state.PauseTiming();
    between();
    NKRXVEL20::host::forgetDriverUse();
    state.ResumeTiming();
  }
  tell(state, calls, allocations);
}

void collection(benchmark::State& state, const std::string& size) {
  const PlatformCalls& calls = callsOn(size);
  PluginOnMachine plugin(machineFile(size));
  plugin.load();
  plugin.init();
  measure(
      state, calls, [&] { plugin.collect(plugin.ns()); }, [&] { plugin.init(); });
}

void itsFloor(benchmark::State& state, const std::string& size) {
  const PlatformCalls& calls = callsOn(size);
  const PluginOnMachine platform(machineFile(size));
  std::vector<boost::shared_ptr<NKRXVEL20::ICIMInstance>> instances;
  measure(
      state, calls, [&] { instances = velhost::repeated(calls, *platform.ns()); },
      [&] { instances.clear(); });
}

void publication(benchmark::State& state, const std::string& size) {
  const PlatformCalls& calls = callsOn(size);
  PluginOnMachine plugin(machineFile(size));
  plugin.load();
  plugin.init();
  plugin.collect(plugin.ns());
  measure(
      state, calls, [&] { plugin.getData(); }, [&] { plugin.ns()->takePublished(); });
}

void loadAndInit(benchmark::State& state) {
  PluginOnMachine plugin(machineFile("1x8"));
  for (auto _ : state) {
    plugin.load();  // the one before is unloaded
    plugin.init();
  }
}

BENCHMARK(loadAndInit)->Setup(bench::useSchema);

void registerOn(const std::string& size) {
  const struct {
    const char* name;
    void (*run)(benchmark::State&, const std::string&);
  } kinds[] = {{"collection", collection}, {"floor", itsFloor}, {"publication", publication}};
  for (const auto& [name, run] : kinds) {
    benchmark::RegisterBenchmark((std::string(name) + '/' + size).c_str(),
                                 [run = run, size](benchmark::State& state) { run(state, size); })
        ->Setup(bench::useSchema)
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const char* const size : {MACHINE_SIZES}) registerOn(size);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
