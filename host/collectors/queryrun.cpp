// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/queryrun.h"

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <iterator>
#include <utility>

#include "host/collectors/classfailure.h"
#include "host/collectors/requesterror.h"
#include "host/reasons/words.h"
#include "vel/exception.h"
#include "vel/log.h"
#include "vel/rootobject.h"
#include "velhost/rootobject.h"
#include "velhost/schema.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

constexpr std::array<std::string_view, 11> kFirmwareClasses{
    "KRXSG_DiagnosticVPD",
    "KRXSG_PostBIOSVPD",
    "KRXSG_SystemBIOSElement",
    "KRXSG_HardwareRevisionLevel",
    "KRXSG_Vpd",
    "KRXSG_SPROMFirmwareVPDMain",
    "KRXSG_SPROMFirmwareVPDBootROM",
    "KRXSG_DeviceDriver",
    "KRXSG_SystemBIOS",
    "KRXSG_cKVM",
    "KRXSG_USBTapeFirmwareElement",
};

bool isCompanion(const Collector& collector, const std::string& provider) {
  return provider == collector.identity().name && provider != kFirmwareCollector;
}

}  // namespace

QueryRun::PlatformGuard::~PlatformGuard() {
  host::setTimeLimit(std::nullopt);
  host::setCoreLogSink({});
  host::setFailureLogSink({});
  host::setSPLibrary(nullptr);
  host::setSmbiosTable(std::nullopt);
  host::setMachineType(std::nullopt);
}

QueryRun::QueryRun(Machine machine, RunOptions options)
    : options_(std::move(options)),
      witness_(machine, options_.timeLimit),
      listed_(machine.collectors.begin(), machine.collectors.end()) {
  context_.machineSource = machine.source;
  context_.machineName = machine.name;
  installPlatform(machine);
  collectors_ = std::make_unique<CollectorSet>(options_.collectors);
  if (const PluginIdentity* first = collectors_->first()) context_.plugin = *first;
}

// What a plug-in enumerates while it ends is not collected any more.
QueryRun::~QueryRun() { namespace_->setOnEnumeration({}); }

void QueryRun::installPlatform(Machine& machine) {
  namespace_ = boost::make_shared<host::CimNamespace>(machine.missingClasses, machine.faults);
  for (const std::string& className : machine.givenClasses) given_[className];
  for (Companion& companion : machine.companions) {
    namespace_->addCompanion(companion.className, companion.properties);
    given_[companion.className].push_back({companion.className, std::move(companion.properties)});
  }
  namespace_->setOnEnumeration([this](const std::string& name) { return collectOnDemand(name); });
  host::setMachineType(std::move(machine.machineType));
  host::setSmbiosTable(std::move(machine.smbios));
  host::setSPLibrary(std::move(machine.sp),
                     options_.keepTraffic ? host::Traffic::kKept : host::Traffic::kForgotten);
  host::setCoreLogSink([this](const host::LogEntry& entry) {
    if (options_.keepLogs) coreLog_.push_back(entry);
    if (options_.onCoreLog) options_.onCoreLog(entry);
  });
  if (!options_.keepLogs) return;
  host::setFailureLogSink([this](const host::LogEntry& entry) { failureLog_.push_back(entry); });
}

std::vector<std::string> QueryRun::defaultClasses() {
  std::vector<std::string> classes;
  const std::vector<std::string> others = companionClasses();
  if (others.empty() || collectors_->named(kFirmwareCollector) != nullptr) {
    classes.assign(kFirmwareClasses.begin(), kFirmwareClasses.end());
  }
  classes.insert(classes.end(), others.begin(), others.end());
  return classes;
}

std::vector<std::string> QueryRun::companionClasses() {
  std::vector<std::string> classes;
  for (const host::ClassSchema& cimClass : host::schema()) {
    const std::string provider(cimClass.provider);
    if (provider.empty() || provider == kFirmwareCollector) continue;
    const bool isGiven = listed_.contains(provider) && given_.contains(std::string(cimClass.name));
    if (isGiven || collectors_->named(provider) != nullptr) classes.emplace_back(cimClass.name);
  }
  return classes;
}

// Classes that follow each other go to the firmware collector, or to the one plug-in of the run, in
// one question. Other collectors are asked for each class alone, as it may be known already.
std::vector<QueryRun::Question> QueryRun::questionsOf(const std::vector<std::string>& classes) {
  std::vector<Question> questions;
  for (const std::string& name : classes) {
    const std::string provider(host::findClass(name)->provider);
    Question question{listed_.contains(provider) && given_.contains(name), {}, {name}};
    if (!question.isGiven) question.collectors = collectors_->serving(name);
    const bool joins = !questions.empty() && question.collectors.size() == 1 &&
                       questions.back().collectors == question.collectors &&
                       !isCompanion(*question.collectors.front(), provider);
    if (joins) {
      questions.back().classes.push_back(name);
    } else {
      questions.push_back(std::move(question));
    }
  }
  return questions;
}

// Publishes what is known of a class already: what the file gives, and what another collector
// needed. False when nothing is.
bool QueryRun::publishKnown(const Question& question, QueryResult& result) {
  const std::string& name = question.classes.front();
  const auto& known = question.isGiven ? given_ : collectedAside_;
  const auto rows = known.find(name);
  if (rows == known.end()) return false;
  result.instances.insert(result.instances.end(), rows->second.begin(), rows->second.end());
  witness_.sawOutcome(
      {std::string(host::findClass(name)->provider), failedAside_[name], question.isGiven, {}});
  return true;
}

// Asks each collector of the question; of several that may serve its class one has to.
QueryRun::Served QueryRun::askEach(const Question& question, QueryResult& result) {
  Served served{"", false,
                RequestError{"TVELException", NKRXVEL20::kErrorClassNotServed,
                             collectors_->whyNotServed(question.classes.front()), false}};
  for (Collector* const collector : question.collectors) {
    const PluginIdentity& identity = collector->identity();
    if (context_.plugin.name.empty()) context_.plugin = identity;
    const auto error = answerOf(*collector, question.classes);
    for (auto& row : namespace_->takePublished()) result.instances.push_back(std::move(row));
    const bool isRefused = error && error->code == NKRXVEL20::kErrorClassNotServed;
    if (error && !isRefused) note(identity.name, *error, result);
    if (isRefused && served.isServed) continue;
    if (served.isServed && !error) continue;  // what another one ended in counts
    served = {identity.name, !isRefused, error};
  }
  return served;
}

// Why the question was refused, and which collectors were missing for it.
void QueryRun::noteRefusal(const Question& question, const RequestError& refusal,
                           QueryResult& result) {
  note(question.classes.front(), refusal, result);
  if (!refusal.wasAsked) return;
  for (const std::string& name : question.classes) {
    if (collectors_->isLeftOut(name)) failures_.push_back(collectors_->whyNotServed(name));
  }
}

// Why each class of the question got no answer; empty where it got one. One whose own collector could
// not be loaded failed for that, whoever was asked in its place.
std::vector<std::string> QueryRun::failuresOf(const Question& question, const Served& served,
                                              const QueryResult& result) {
  std::set<std::string> published;
  for (const auto& row : result.instances) published.insert(row.className);
  std::vector<std::string> failures(question.classes.size());
  if (served.error) {
    failures = classFailures(question.classes, published, served.collector, *served.error);
  }
  for (std::size_t i = 0; i < failures.size(); ++i) {
    const std::string provider(host::findClass(question.classes[i])->provider);
    const std::string* const why = collectors_->whyNotLoaded(provider);
    if (!failures[i].empty() && why != nullptr) failures[i] = *why;
  }
  return failures;
}

void QueryRun::ask(const Question& question, QueryResult& result) {
  if (publishKnown(question, result)) return;
  asked_.insert(question.classes.begin(), question.classes.end());
  const Served served = askEach(question, result);
  if (!served.isServed) noteRefusal(question, *served.error, result);
  const auto failures = failuresOf(question, served, result);
  for (std::size_t i = 0; i < failures.size(); ++i) {
    const bool isRefused = !served.isServed && !failures[i].empty();
    const std::string provider(host::findClass(question.classes[i])->provider);
    witness_.sawOutcome(
        {isRefused && !provider.empty() ? provider : served.collector, failures[i], false, {}});
  }
}

// How the answer ended; nullopt: well.
std::optional<RequestError> QueryRun::answerOf(Collector& collector,
                                               const std::vector<std::string>& classes) {
  asking_.push_back(&collector);
  std::optional<RequestError> error;
  try {
    collector.ask(namespace_, classes);
  } catch (...) {
    error = describeCurrentException();
  }
  asking_.pop_back();
  witness_.sawAnswer(collector.identity(), error);
  return error;
}

void QueryRun::noteMissing(const std::string& provider) {
  if (const std::string* const why = collectors_->whyNotLoaded(provider)) {
    witness_.sawFailure(provider, *why);
  } else {
    witness_.sawNone(provider);
  }
}

// False for a collector whose own question leads back to it.
bool QueryRun::collectOnDemand(const std::string& className) {
  const std::string provider(host::findClass(className)->provider);
  if (!asking_.empty()) witness_.sawEnumeration(className);
  if (asking_.empty() || provider.empty() || given_.contains(className)) return true;
  Collector* const collector = collectors_->named(provider);
  if (collector == nullptr) noteMissing(provider);
  if (collector == nullptr || asking_.back() == collector) return true;
  if (std::ranges::find(asking_, collector) != asking_.end()) {
    NKRXVEL20::TRootObject::GetCoreLogger().Log(
        NKRXVEL20::kSeverityPrevented,
        className + " leads back to " + provider + ", which is being asked: no instances of it");
    return false;
  }
  if (!asked_.contains(className)) askAside(*collector, className);
  return true;
}

// What is published now is not of the request; it is kept in case that the class is asked for.
void QueryRun::askAside(Collector& collector, const std::string& className) {
  const std::size_t before = namespace_->publishedCount();
  asked_.insert(className);
  if (const auto error = answerOf(collector, {className})) {
    const std::string& name = collector.identity().name;
    failures_.push_back(name + ", asked for " + className + ": " + errorText(*error));
    failedAside_[className] = endText(name, *error);
    witness_.sawFailure(name, failedAside_[className]);
  }
  collectedAside_[className] = namespace_->takePublished(before);
}

// The first error is the request's; the others are told in a line.
void QueryRun::note(const std::string& whose, const RequestError& error, QueryResult& result) {
  if (!result.error) {
    result.error = error;
  } else {
    failures_.push_back(whose + ": " + errorText(error));
  }
}

void QueryRun::setTimeLimit() const {
  if (options_.timeLimit <= std::chrono::milliseconds::zero()) return;
  host::setTimeLimit(options_.clock->now() + options_.timeLimit, *options_.clock);
}

// What other collectors published is collected anew after Init, and takes the place of the old.
void QueryRun::restart() {
  collectors_->restart();
  for (const host::ClassSchema& cimClass : host::schema()) {
    const std::string name(cimClass.name);
    if (!cimClass.provider.empty() && !given_.contains(name)) namespace_->forget(name);
  }
}

void QueryRun::conclude(QueryResult& result) {
  witness_.conclude(*namespace_, options_.keepSteps, result);
  for (const auto& [file, reason] : collectors_->notLoaded()) {
    result.collectors.push_back({file.filename().string(), "", false, reasonLine(reason)});
  }
}

QueryResult QueryRun::request(const std::vector<std::string>& classes, bool init) {
  QueryResult result;
  result.requested = classes;
  asked_.clear();
  collectedAside_.clear();
  failedAside_.clear();
  witness_.begin(init);
  setTimeLimit();
  if (init) restart();
  for (const Question& question : questionsOf(classes)) ask(question, result);
  conclude(result);
  result.failures = collectors_->takeFailures();
  std::ranges::move(std::exchange(failures_, {}), std::back_inserter(result.failures));
  result.coreLog = std::exchange(coreLog_, {});
  result.failureLog = std::exchange(failureLog_, {});
  result.traffic = host::takeTraffic();
  return result;
}

}  // namespace velhost
