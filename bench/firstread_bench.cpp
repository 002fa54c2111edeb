// SPDX-License-Identifier: Apache-2.0
//
// What reading the schema costs a program that starts: the first read in a fresh process, with its
// page faults and cold caches, in the median of many processes. query_bench has the read that is
// done again and again.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "velhost/schema.h"

namespace {

struct Cost {
  double cpu = 0;   // milliseconds, of the system too
  double wall = 0;  // milliseconds
  double faults = 0;
};

constexpr struct {
  const char* name;
  double Cost::*member;
} kColumns[] = {
    {"ms of CPU", &Cost::cpu}, {"ms of wall clock", &Cost::wall}, {"page faults", &Cost::faults}};

double milliseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

Cost soFar() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {milliseconds(CLOCK_PROCESS_CPUTIME_ID), milliseconds(CLOCK_MONOTONIC),
          static_cast<double>(usage.ru_minflt)};  // NOLINT(*-union-access): glibc's own
}

Cost costOfRead() {
  const std::filesystem::path folder = SCHEMA_DIR;
  const Cost first = soFar();  // its own pages come in here
  const Cost before = soFar();
  const auto schema = NKRXVEL20::host::readSchema(folder);
  const Cost after = soFar();
  if (schema->classes.empty() || first.wall > before.wall) std::abort();
  return {after.cpu - before.cpu, after.wall - before.wall, after.faults - before.faults};
}

// What this program finds when it is started with the number of a pipe.
int readOnce(int pipe) {
  const Cost cost = costOfRead();
  return write(pipe, &cost, sizeof cost) == sizeof cost ? 0 : 1;
}

Cost costInFreshProcess(const char* program) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    std::string name = program;
    std::string pipe = std::to_string(ends[1]);
    std::array<char*, 3> arguments{name.data(), pipe.data(), nullptr};
    execv(program, arguments.data());
    _exit(1);
  }
  close(ends[1]);
  Cost cost;
  const auto count = read(ends[0], &cost, sizeof cost);
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (count != sizeof cost) throw std::runtime_error("a process did not tell its cost");
  return cost;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::size_t kProcesses = 1001;
  if (argc > 1) return readOnce(std::atoi(argv[1]));
  std::vector<Cost> costs(kProcesses);
  for (Cost& cost : costs) cost = costInFreshProcess("/proc/self/exe");
  std::cout << std::fixed << std::setprecision(3) << "first read in " << kProcesses
            << " processes: median, least, 95 %\n";
  for (const auto& [name, member] : kColumns) {
    std::ranges::sort(costs, {}, member);
    std::cout << std::left << std::setw(18) << name << std::right;
    for (const std::size_t at : {kProcesses / 2, std::size_t{0}, kProcesses * 95 / 100}) {
      std::cout << std::setw(9) << costs[at].*member;
    }
    std::cout << '\n';
  }
}
