// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/emptyclasses.h"
#include "host/collectors/queryrun.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/answer.h"
#include "host/commandline/askedmachine.h"
#include "host/commandline/classnames.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/formats/nodefilter.h"
#include "host/formats/whytext.h"
#include "host/progress/progressdisplay.h"
#include "host/reasons/words.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::host::LogEntry;

// Whole, however long: it was asked for.
void showLogEntry(const LogEntry& entry, int level) {
  if (entry.severity > level) return;
  writeErrorLine("log[" + std::to_string(entry.severity) + "]: " + visible(entry.text));
}

// Documents that have had their shape for long say nothing of the states.
bool showsStates(Format format) { return format != Format::kJson && format != Format::kTrace; }

EmptyClasses emptyClassesIn(Format format) {
  return showsStates(format) ? EmptyClasses::kTroubledStay : EmptyClasses::kLeftOut;
}

// How all requests of a query went.
struct Requests {
  bool answered = true;
  std::vector<ClassState> troubled;  // of the last one that has any
  std::string why;                   // the steps that failed in the last one, where asked for
  bool isCutOff = false;             // the time of one of them was over before all was asked
  std::string missingNode;           // why the last one has nothing of the node asked for
};

void noteTrouble(const QueryResult& result, Requests& requests) {
  std::vector<ClassState> troubled;
  std::ranges::copy_if(result.states, std::back_inserter(troubled),
                       [](const ClassState& state) { return isTrouble(state.state); });
  if (!troubled.empty()) requests.troubled = std::move(troubled);
}

// The trace has everything.
void filterByNode(const QueryCommand& command, QueryResult& result, Requests& requests) {
  if (!command.node || command.format == Format::kTrace) return;
  requests.missingNode = missingNode(*command.node, result);
  keepNode(*command.node, result);
}

TableOptions tableOptions(const QueryCommand& command) {
  return {command.output ? fileScreen() : standardOutputScreen(),
          command.wide || !command.classes.empty()};
}

Requests makeRequests(const QueryCommand& command, QueryRun& queryRun, Answer& answer) {
  const bool asksForAll = command.classes.empty();
  const auto classes = asksForAll ? queryRun.defaultClasses() : command.classes;
  const auto unnamed = asksForAll ? queryRun.companionClasses() : std::vector<std::string>();
  Requests requests;
  ProgressDisplay progress;
  for (unsigned i = 0; i < command.repeat; ++i) {
    progress.begin(!command.reinit || i + 1 == command.repeat);
    const Stopwatch watch;
    QueryResult result = queryRun.request(classes, i == 0 || command.reinit);
    noteTrouble(result, requests);
    requests.isCutOff = requests.isCutOff || result.isCutOff;
    if (command.why) requests.why = whyText(result, tableOptions(command).screen);
    filterByNode(command, result, requests);
    leaveOutEmpty(unnamed, emptyClassesIn(command.format), result);
    requests.answered = complainOfFailures(result) && requests.answered;
    answer.add(std::move(result), watch.time());
  }
  return requests;
}

// A BMC that answers each command at the last moment does not keep a query for hours.
constexpr std::chrono::minutes kLiveTimeLimit{5};

std::chrono::milliseconds timeLimitOf(const QueryCommand& command) {
  return command.timeout.value_or(command.machine ? std::chrono::milliseconds::zero()
                                                  : kLiveTimeLimit);
}

// What the answer itself does not tell: one line with the first class and its reason.
void complainOfTrouble(const std::vector<ClassState>& troubled) {
  const ClassState& first = troubled.front();
  std::string line = first.className + " is " + std::string(stateName(first.state)) + ": ";
  line += first.reason;
  const std::size_t more = troubled.size() - 1;
  if (more > 0) line += "; and " + std::to_string(more) + " more, --format table tells";
  complain(line);
}

void tellTrouble(const Requests& requests, std::chrono::milliseconds timeLimit) {
  if (!requests.isCutOff) return complainOfTrouble(requests.troubled);
  complain("the time of " + secondsText(timeLimit) +
           " was over before all was asked; --timeout sets another");
}

// The log is for those who ask for it: most formats have the reasons.
int shownLogLevel(const QueryCommand& command) {
  constexpr int kNone = std::numeric_limits<int>::min();
  const bool isShown = command.hasLogLevel || !showsStates(command.format);
  return isShown ? command.logLevel : kNone;
}

ExitStatus statusOf(const QueryCommand& command, const Unreadable& unreadable,
                    const Requests& requests) {
  const ExitStatus status = unreadable.status(requests.answered);
  if (status != kAnswered) return status;
  if (requests.isCutOff) return kUnreadable;
  if (command.format == Format::kTrace) return status;
  return requests.troubled.empty() ? kAnswered : kUnreadable;
}

RunOptions optionsOf(const QueryCommand& command, CollectorFiles collectors) {
  const int level = shownLogLevel(command);
  const bool isTrace = command.format == Format::kTrace;
  return {std::move(collectors),
          isTrace,
          isTrace,
          [level](const LogEntry& entry) { showLogEntry(entry, level); },
          command.why,
          timeLimitOf(command)};
}

}  // namespace

int run(const QueryCommand& command) {
  useSchema(programFolder());
  for (const std::string& name : command.classes) schemaClass(name);
  Machine machine = machineOf(command);
  const Unreadable unreadable(machine);
  const auto output = outputOf(command, {});
  auto collectors = collectorFiles(command.plugins, machine, programFolder());
  giveUpRoot(collectors, output);
  QueryRun queryRun(std::move(machine), optionsOf(command, std::move(collectors)));
  unreadable.tellRefused();
  const Replies replies = command.bytes ? Replies::kShown : Replies::kLeftOut;
  Answer answer(command.format, tableOptions(command), replies, queryRun.context());
  const Requests requests = makeRequests(command, queryRun, answer);
  unreadable.tellSilence();
  const ExitStatus status = statusOf(command, unreadable, requests);
  const bool isTold = showsStates(command.format) || unreadable.isAny();
  if (status == kUnreadable && !isTold) tellTrouble(requests, timeLimitOf(command));
  if (!requests.missingNode.empty()) complain(requests.missingNode);
  const bool isTable = command.format == Format::kTable;  // the other answers are documents
  print(output, answer.text() + (isTable && command.why ? '\n' + requests.why : ""));
  if (!isTable) writeStandardError(requests.why);
  return status;
}

}  // namespace velhost
