// SPDX-License-Identifier: Apache-2.0
//
// The collectors of a machine, ready to be queried.
#pragma once

#include <boost/shared_ptr.hpp>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/collectors/collectorset.h"
#include "host/collectors/queryresult.h"
#include "host/collectors/witness.h"
#include "host/machine/machine.h"
#include "velhost/commandtime.h"
#include "velhost/log.h"

namespace velhost {

struct RunOptions {
  CollectorFiles collectors;
  bool keepLogs = false;                   // they go into the results
  bool keepTraffic = false;                // as well
  NKRXVEL20::host::LogSink onCoreLog;      // gets every core-log entry as it comes
  bool keepSteps = false;                  // those that failed, with the classes' states
  std::chrono::milliseconds timeLimit{0};  // of each request's commands; 0: none
  NKRXVEL20::host::Clock* clock = &NKRXVEL20::host::steadyClock();  // that the limit goes by
};

// Sets the platform up for the machine while it lives, so there is one at a time.
class QueryRun {
 public:
  // Throws PluginLoadError.
  QueryRun(Machine machine, RunOptions options);
  ~QueryRun();

  QueryRun(const QueryRun&) = delete;
  QueryRun& operator=(const QueryRun&) = delete;

  // The plug-in is the one that was asked first.
  const QueryContext& context() const { return context_; }

  // What is asked for when no class is named: the classes that the firmware collector serves, in the
  // order of its class-name table, the tape class, then those of the other collectors. A run of named
  // plug-ins that has other collectors only has their classes only.
  std::vector<std::string> defaultClasses();

  // The classes that other collectors of this run provide, in the schema's order.
  std::vector<std::string> companionClasses();

  // Asks for classes of the schema, each of the collector that serves it. Runs Init first when
  // `init` is set or no Init has succeeded yet. An exception of a plug-in or the framework ends up
  // in the result. When its time is over nothing more is sent to SPs and BMCs, and what they were
  // not asked is told with the classes' states.
  QueryResult request(const std::vector<std::string>& classes, bool init);

  // What the framework has of a class now, whoever published it.
  std::vector<NKRXVEL20::host::PublishedInstance> instancesOf(const std::string& className) const {
    return namespace_->instancesOf(className);
  }

 private:
  // Classes that follow each other in a request and go to the same collectors.
  struct Question {
    bool isGiven = false;  // the machine's file has the instances of its one class
    std::vector<Collector*> collectors;
    std::vector<std::string> classes;
  };
  struct Served {
    std::string collector;  // that answered, or refused; empty: none was asked
    bool isServed = false;
    std::optional<RequestError> error;
  };
  using Rows = std::vector<NKRXVEL20::host::PublishedInstance>;

  void installPlatform(Machine& machine);
  std::vector<Question> questionsOf(const std::vector<std::string>& classes);
  void ask(const Question& question, QueryResult& result);
  bool publishKnown(const Question& question, QueryResult& result);
  Served askEach(const Question& question, QueryResult& result);
  void noteRefusal(const Question& question, const RequestError& refusal, QueryResult& result);
  std::vector<std::string> failuresOf(const Question& question, const Served& served,
                                      const QueryResult& result);
  std::optional<RequestError> answerOf(Collector& collector,
                                       const std::vector<std::string>& classes);
  void note(const std::string& whose, const RequestError& error, QueryResult& result);
  void setTimeLimit() const;
  void restart();
  bool collectOnDemand(const std::string& className);
  void askAside(Collector& collector, const std::string& className);
  void noteMissing(const std::string& provider);
  void conclude(QueryResult& result);

  // From the outside in: what is installed first is taken away last.
  struct PlatformGuard {
    PlatformGuard() = default;
    PlatformGuard(const PlatformGuard&) = delete;
    PlatformGuard& operator=(const PlatformGuard&) = delete;
    ~PlatformGuard();
  };

  RunOptions options_;
  QueryContext context_;
  Witness witness_;
  std::vector<NKRXVEL20::host::LogEntry> coreLog_;
  std::vector<NKRXVEL20::host::LogEntry> failureLog_;
  std::map<std::string, Rows> given_;  // by the machine's file, in place of a collector
  std::set<std::string> listed_;       // the collectors that the file lists
  PlatformGuard guard_;
  boost::shared_ptr<NKRXVEL20::host::CimNamespace> namespace_;
  std::unique_ptr<CollectorSet> collectors_;

  std::vector<Collector*> asking_;  // each of them by the one before it

  // Of the request that is being made.
  std::set<std::string> asked_;                     // classes that their collector was asked for
  std::map<std::string, Rows> collectedAside_;      // what other collectors needed first
  std::map<std::string, std::string> failedAside_;  // why, by class
  std::vector<std::string> failures_;
};

}  // namespace velhost
