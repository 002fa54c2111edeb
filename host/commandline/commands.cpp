// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/commands.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/queryrun.h"
#include "host/collectors/requesterror.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/answer.h"
#include "host/files/outputfile.h"
#include "host/files/standardstreams.h"
#include "host/formats/collectorlist.h"
#include "host/formats/schemaformat.h"
#include "host/formats/whytext.h"
#include "host/machine/machine.h"
#include "host/machine/machinefile.h"
#include "host/machine/machinewriter.h"
#include "host/machine/refusedsource.h"
#include "host/machine/schemanames.h"
#include "host/recording/record.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::LogEntry;
using NKRXVEL20::host::PublishedInstance;

constexpr std::size_t kLongestComplaint = 400;  // room for a path, a place and what is wrong there

// Who names a file forgot the option before it; who names no class by a hair gets the hint.
std::string whatWasMeant(const std::string& name) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(name, ignored);
  if (std::filesystem::exists(status) && !std::filesystem::is_directory(status)) {
    return "; a machine is asked with --machine " + name;
  }
  const std::string meant = classSuggestion(name);
  return meant.empty() ? "; velhost classes lists them" : meant;
}

const ClassSchema* schemaClass(const std::string& name) {
  const ClassSchema* const found = NKRXVEL20::host::findClass(name);
  if (found == nullptr) throw InputError("\"" + name + "\" is no class" + whatWasMeant(name));
  return found;
}

void print(const std::unique_ptr<OutputFile>& file, std::string_view text) {
  if (file) {
    file->write(text);
  } else {
    writeStandardOutput(text);
  }
}

void writeErrorLine(const std::string& text) { writeStandardError("velhost: " + text + '\n'); }

// Whole, however long: it was asked for.
void showLogEntry(const LogEntry& entry, int level) {
  if (entry.severity > level) return;
  writeErrorLine("log[" + std::to_string(entry.severity) + "]: " + visible(entry.text));
}

void complainOf(const RequestError& error) {
  complain((error.wasAsked ? "the plug-in refused the request: " : "") + errorText(error));
}

template <class Command>
Machine machineOf(const Command& command) {
  return command.machine ? machineOfFile(*command.machine) : liveMachine();
}

template <class Command>
std::unique_ptr<OutputFile> outputOf(const Command& command, FileRules rules) {
  return command.output ? std::make_unique<OutputFile>(*command.output, rules) : nullptr;
}

// Tells what of the live machine cannot be read: at once what was refused, and when it was asked
// that its BMC did not answer.
class Unreadable {
 public:
  explicit Unreadable(const Machine& machine)
      : refused_(machine.unreadable), silence_(machine.silence) {}

  void tellRefused() const {
    for (const std::string& line : refused_) complain(line);
  }
  void tellSilence() const {
    if (isSilent()) complain(silenceLine(**silence_));
  }
  bool isAny() const { return !refused_.empty() || isSilent(); }
  ExitStatus status(bool answered) const {
    if (!answered) return kRefused;
    return isAny() ? kUnreadable : kAnswered;
  }

 private:
  bool isSilent() const { return silence_ && *silence_; }

  std::vector<std::string> refused_;
  std::shared_ptr<const std::optional<NKRXVEL20::host::SilentBmc>> silence_;
};

// Classes that have instances: the abstract ones are shown to those who name them.
ClassList concreteClasses() {
  ClassList classes;
  for (const ClassSchema& cimClass : NKRXVEL20::host::schema()) {
    if (!cimClass.isAbstract) classes.push_back(&cimClass);
  }
  return classes;
}

std::string classesText(Format format, const ClassList& named) {
  if (format == Format::kMof) {
    const auto schema = NKRXVEL20::host::currentSchema();
    return named.empty() ? mofText(*schema) : mofText(*schema, named);
  }
  const ClassList classes = named.empty() ? concreteClasses() : named;
  return format == Format::kJson ? schemaJson(classes) : schemaTable(classes);
}

// True when nothing failed.
template <class Result>
bool complainOfFailures(const Result& result) {
  if (result.error) complainOf(*result.error);
  for (const std::string& line : result.failures) complain(line);
  return !result.error && result.failures.empty();
}

// Documents that have had their shape for long say nothing of the states.
bool showsStates(Format format) { return format != Format::kJson && format != Format::kTrace; }

bool isIn(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

bool hasInstances(const QueryResult& result, const std::string& name) {
  return std::ranges::find(result.instances, name, &PublishedInstance::className) !=
         result.instances.end();
}

// Nobody asked for the other collectors' classes by name: those without instances are not shown, but
// where something is wrong with them, if that can be shown.
void leaveOutEmpty(const std::vector<std::string>& classes, Format format, QueryResult& result) {
  std::erase_if(result.states, [&](const ClassState& state) {
    const bool isToTell = showsStates(format) && isTrouble(state.state);
    return isIn(classes, state.className) && !isToTell && !hasInstances(result, state.className);
  });
  result.requested.clear();
  for (const ClassState& state : result.states) result.requested.push_back(state.className);
}

// How all requests of a query went.
struct Requests {
  bool answered = true;
  std::vector<ClassState> troubled;  // of the last one that has any
  std::string why;                   // the steps that failed in the last one, where asked for
};

void noteTrouble(const QueryResult& result, Requests& requests) {
  std::vector<ClassState> troubled;
  std::ranges::copy_if(result.states, std::back_inserter(troubled),
                       [](const ClassState& state) { return isTrouble(state.state); });
  if (!troubled.empty()) requests.troubled = std::move(troubled);
}

Requests makeRequests(const QueryCommand& command, QueryRun& queryRun, Answer& answer) {
  const bool asksForAll = command.classes.empty();
  const auto classes = asksForAll ? queryRun.defaultClasses() : command.classes;
  const auto unnamed = asksForAll ? queryRun.companionClasses() : std::vector<std::string>();
  Requests requests;
  for (unsigned i = 0; i < command.repeat; ++i) {
    const Stopwatch watch;
    QueryResult result = queryRun.request(classes, i == 0 || command.reinit);
    noteTrouble(result, requests);
    if (command.why) requests.why = whyText(result);
    leaveOutEmpty(unnamed, command.format, result);
    requests.answered = complainOfFailures(result) && requests.answered;
    answer.add(std::move(result), watch.time());
  }
  return requests;
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

// The log is for those who ask for it: most formats have the reasons.
int shownLogLevel(const QueryCommand& command) {
  constexpr int kNone = std::numeric_limits<int>::min();
  const bool isShown = command.hasLogLevel || !showsStates(command.format);
  return isShown ? command.logLevel : kNone;
}

ExitStatus statusOf(const QueryCommand& command, const Unreadable& unreadable,
                    const Requests& requests) {
  const ExitStatus status = unreadable.status(requests.answered);
  if (status != kAnswered || command.format == Format::kTrace) return status;
  return requests.troubled.empty() ? kAnswered : kUnreadable;
}

}  // namespace

int run(const QueryCommand& command) {
  useSchema(programFolder());
  for (const std::string& name : command.classes) schemaClass(name);
  Machine machine = machineOf(command);
  const Unreadable unreadable(machine);
  const auto output = outputOf(command, {});
  auto collectors = collectorFiles(command.plugins, machine, programFolder());

  const int level = shownLogLevel(command);
  const bool isTrace = command.format == Format::kTrace;
  QueryRun queryRun(std::move(machine),
                    {std::move(collectors), isTrace, isTrace,
                     [level](const LogEntry& entry) { showLogEntry(entry, level); }, command.why});
  unreadable.tellRefused();
  Answer answer(command.format, queryRun.context());
  const Requests requests = makeRequests(command, queryRun, answer);
  unreadable.tellSilence();
  const ExitStatus status = statusOf(command, unreadable, requests);
  const bool isTold = showsStates(command.format) || unreadable.isAny();
  if (status == kUnreadable && !isTold) complainOfTrouble(requests.troubled);
  const bool isTable = command.format == Format::kTable;  // the other answers are documents
  print(output, answer.text() + (isTable && command.why ? '\n' + requests.why : ""));
  if (!isTable) writeStandardError(requests.why);
  return status;
}

int run(const ClassesCommand& command) {
  useSchema(programFolder());
  ClassList classes;
  for (const std::string& name : command.classes) classes.push_back(schemaClass(name));
  writeStandardOutput(classesText(command.format, classes));
  return kAnswered;
}

int run(const CollectorsCommand& /*command*/) {
  useSchema(programFolder());
  CollectorSet collectors({.loaded = {}, .onDemand = pluginsIn(collectorsFolder(programFolder()))});
  collectors.loadAll();
  writeStandardOutput(collectorList(collectors));
  const auto failures = collectors.takeFailures();
  for (const std::string& line : failures) complain(line);
  return failures.empty() ? kAnswered : kRefused;
}

int run(const RecordCommand& command) {
  useSchema(programFolder());
  Machine machine = machineOf(command);
  const Unreadable unreadable(machine);
  const auto output = outputOf(command, {.isPrivate = true, .mayReplace = command.force});
  auto collectors = collectorFiles(command.plugins, machine, programFolder());
  const Recording recording = record(std::move(machine), {std::move(collectors), command.redact});
  unreadable.tellRefused();
  const bool answered = complainOfFailures(recording);
  unreadable.tellSilence();
  print(output, machineFileText(recording.machine));
  return unreadable.status(answered);
}

int run(const CheckCommand& command) {
  useSchema(programFolder());
  int status = kAnswered;
  for (const auto& file : command.files) {
    try {
      static_cast<void>(readMachineFile(file));
      writeStandardOutput(visible(machineFileName(file)) + ": ok\n");
    } catch (const MachineFileError& error) {
      complain(error.what());
      status = kBadInput;
    }
  }
  return status;
}

int run(const PrintCommand& command) {
  writeStandardOutput(command.text);
  return kAnswered;
}

void complain(std::string_view what) {
  writeErrorLine(shortened(visible(what), kLongestComplaint));
}

}  // namespace velhost
