// SPDX-License-Identifier: Apache-2.0
//
// Texts read and written: machine files, the schema, and the answer of a query in each format.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench/usedschema.h"
#include "host/collectors/queryrun.h"
#include "host/commandline/answer.h"
#include "host/machine/machinefile.h"
#include "host/machine/machinewriter.h"

namespace {

using velhost::Format;

std::filesystem::path machineFile(const std::string& size) {
  return std::filesystem::path(MACHINES_DIR) / (size + ".json");
}

void readMachineFile(benchmark::State& state, const char* size) {
  for (auto _ : state) benchmark::DoNotOptimize(velhost::readMachineFile(machineFile(size)));
}

void writeMachineFile(benchmark::State& state, const char* size) {
  const auto machine = velhost::readMachineFile(machineFile(size));
  for (auto _ : state) benchmark::DoNotOptimize(velhost::machineFileText(machine));
}

void readSchema(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(NKRXVEL20::host::readSchema(SCHEMA_DIR));
}

// The text of an answer that has been collected.
void format(benchmark::State& state, Format format) {
  const bool isTrace = format == Format::kTrace;
  velhost::QueryRun run(velhost::machineOfFile(machineFile("8x64")),
                        {.collectors = {{PLUGIN_FILE}, {}},
                         .keepLogs = isTrace,
                         .keepTraffic = isTrace,
                         .onCoreLog = {}});
  const auto result = run.request(run.defaultClasses(), true);
  for (auto _ : state) {
    velhost::Answer answer(format, {}, velhost::Replies::kLeftOut, run.context());
    answer.add(result, {});
    benchmark::DoNotOptimize(answer.text());
  }
}

constexpr const char* kSizes[] = {"1x8", "8x64", "64x128"};

constexpr struct {
  const char* name;
  Format format;
} kFormats[] = {
    {"table", Format::kTable},   {"json", Format::kJson}, {"inventory", Format::kInventory},
    {"ndjson", Format::kNdjson}, {"csv", Format::kCsv},   {"openmetrics", Format::kOpenMetrics},
    {"trace", Format::kTrace}};

template <typename Run, typename Argument>
void add(const std::string& name, Run run, Argument argument) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { run(state, argument); })
      ->Setup(bench::useSchema)
      ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(readSchema)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  for (const char* const size : kSizes) {
    add(std::string("readMachineFile/") + size, readMachineFile, size);
    add(std::string("writeMachineFile/") + size, writeMachineFile, size);
  }
  for (const auto& [name, value] : kFormats) add(std::string("format/") + name, format, value);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
