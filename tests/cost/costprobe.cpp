// SPDX-License-Identifier: Apache-2.0
//
// Does what it is told, each deed in a process of its own, so that a tool which counts what processes
// execute tells what each deed costs without the start of a program. Each line of standard input is a
// deed, its words parted by tabs:
//
//   warm ARGS...       velhost with these words, in the process itself: a tool that translates code
//                      has done so for the deeds that follow
//   velhost ARGS...    the same in a process of its own
//   ready MACHINE      the firmware collector loaded on that machine and Init, after its calls of the
//                      platform were listed in a collection before
//   collect MACHINE    the same, and a collection without publication
//   ask MACHINE        the same, and everything asked for, which publishes too
//   repeat MACHINE     what `ready` does, and the calls made once more without the plug-in, but for log
//                      entries
//
// A line of standard output for each deed but `warm`: the number of a process that did nothing, that of
// the deed's process, its exit status, and how many KiB it had resident at most. What the deeds print goes
// nowhere.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commandline.h"
#include "host/commandline/commands.h"
#include "host/commandline/failure.h"
#include "tests/support/platformcalls.h"
#include "tests/support/pluginonmachine.h"

namespace {

using Words = std::vector<std::string>;

Words wordsOf(const std::string& line) {
  Words words;
  std::istringstream text(line);
  for (std::string word; std::getline(text, word, '\t');) words.push_back(word);
  return words;
}

int runVelhost(Words words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const auto command = velhost::parseCommandLine(static_cast<int>(words.size()), arguments.data());
  return std::visit([](const auto& parsed) { return velhost::run(parsed); }, command);
}

using NKRXVEL20::ICIMNamespace;
using velhost::PlatformCalls;
using velhost::PluginOnMachine;

struct Asked {
  PluginOnMachine plugin;
  PlatformCalls calls;
};

const std::map<std::string, void (*)(Asked&)> kDeedsOnMachines = {
    {"ready", [](Asked&) {}},
    {"collect", [](Asked& asked) { asked.plugin.collect(asked.plugin.ns()); }},
    {"ask", [](Asked& asked) { asked.plugin.getData(); }},
    {"repeat", [](Asked& asked) { velhost::repeated(asked.calls, *asked.plugin.ns()); }},
};

// All begin alike, also in what the heap is like. Leaves before anything is taken down: that is no part of
// what was asked for.
[[noreturn]] void doOnMachine(void (*deed)(Asked&), const std::string& machine) {
  velhost::useSchema(velhost::programFolder());
  auto calls = velhost::withoutLog(velhost::callsOfCollection(machine));
  Asked asked{PluginOnMachine(machine), std::move(calls)};
  asked.plugin.load();
  asked.plugin.init();
  deed(asked);
  _exit(0);
}

int done(const Words& words) {
  try {
    const auto deed = kDeedsOnMachines.find(words.at(0));
    if (deed == kDeedsOnMachines.end()) return runVelhost(words);
    doOnMachine(deed->second, words.at(1));
  } catch (...) {
    return velhost::tellFailure();
  }
}

void printNowhere() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
}

struct Ended {
  pid_t process;
  int status;
  long peak;  // KiB
};

template <typename Deed>
Ended inProcess(const Deed& deed) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) _exit(deed());
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return {child, WIFEXITED(status) ? WEXITSTATUS(status) : -1, usage.ru_maxrss};
}

}  // namespace

int main() {
  std::ios::sync_with_stdio(false);
  const int answers = dup(STDOUT_FILENO);
  printNowhere();
  for (std::string line; std::getline(std::cin, line);) {
    const Words deed = wordsOf(line);
    if (deed.at(0) == "warm") {
      done(deed);
      continue;
    }
    const Ended nothing = inProcess([] { return 0; });
    const Ended something = inProcess([&] { return done(deed); });
    std::ostringstream answer;
    answer << nothing.process << ' ' << something.process << ' ' << something.status << ' '
           << something.peak << '\n';
    if (write(answers, answer.str().data(), answer.str().size()) < 0) return 1;
  }
}
