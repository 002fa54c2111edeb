// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/queryrun.h"

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <iterator>
#include <utility>

#include "host/collectors/requesterror.h"
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
  host::setCoreLogSink({});
  host::setFailureLogSink({});
  host::setSPLibrary(nullptr);
  host::setSmbiosTable(std::nullopt);
  host::setMachineType(std::nullopt);
}

QueryRun::QueryRun(Machine machine, RunOptions options)
    : options_(std::move(options)), listed_(machine.collectors.begin(), machine.collectors.end()) {
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
  return true;
}

void QueryRun::ask(const Question& question, QueryResult& result) {
  if (publishKnown(question, result)) return;
  asked_.insert(question.classes.begin(), question.classes.end());
  RequestError refusal{"TVELException", NKRXVEL20::kErrorClassNotServed,
                       collectors_->whyNotServed(question.classes.front()), false};
  bool isServed = false;  // of several that may serve the class one has to
  for (Collector* const collector : question.collectors) {
    if (context_.plugin.name.empty()) context_.plugin = collector->identity();
    const auto error = answerOf(*collector, question.classes);
    for (auto& row : namespace_->takePublished()) result.instances.push_back(std::move(row));
    if (error && error->code == NKRXVEL20::kErrorClassNotServed) {
      refusal = *error;
    } else {
      isServed = true;
      if (error) note(collector->identity().name, *error, result);
    }
  }
  if (isServed) return;
  note(question.classes.front(), refusal, result);
  if (!refusal.wasAsked) return;
  for (const std::string& name : question.classes) {
    if (collectors_->isLeftOut(name)) failures_.push_back(collectors_->whyNotServed(name));
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
  return error;
}

// False for a collector whose own question leads back to it.
bool QueryRun::collectOnDemand(const std::string& className) {
  const std::string provider(host::findClass(className)->provider);
  if (asking_.empty() || provider.empty() || given_.contains(className)) return true;
  Collector* const collector = collectors_->named(provider);
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
    failures_.push_back(collector.identity().name + ", asked for " + className + ": " +
                        errorText(*error));
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

// What other collectors published is collected anew after Init, and takes the place of the old.
void QueryRun::restart() {
  collectors_->restart();
  for (const host::ClassSchema& cimClass : host::schema()) {
    const std::string name(cimClass.name);
    if (!cimClass.provider.empty() && !given_.contains(name)) namespace_->forget(name);
  }
}

QueryResult QueryRun::request(const std::vector<std::string>& classes, bool init) {
  QueryResult result;
  result.requested = classes;
  asked_.clear();
  collectedAside_.clear();
  if (init) restart();
  for (const Question& question : questionsOf(classes)) ask(question, result);
  result.failures = collectors_->takeFailures();
  std::ranges::move(std::exchange(failures_, {}), std::back_inserter(result.failures));
  result.coreLog = std::exchange(coreLog_, {});
  result.failureLog = std::exchange(failureLog_, {});
  result.traffic = host::takeTraffic();
  return result;
}

}  // namespace velhost
