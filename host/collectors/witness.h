// SPDX-License-Identifier: Apache-2.0
//
// Sees what happens while collectors are asked, and says what it makes of the classes.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/collectors/queryresult.h"
#include "host/machine/machine.h"
#include "host/reasons/observations.h"
#include "velhost/cimnamespace.h"

namespace velhost {

class Witness {
 public:
  // `timeLimit`: of each request; 0: none.
  Witness(const Machine& machine, std::chrono::milliseconds timeLimit);

  // A request begins. Collectors collect once after Init and publish at each request, so what was
  // seen stays until the next Init.
  void begin(bool init);

  void sawAnswer(const PluginIdentity& collector, const std::optional<RequestError>& error);
  void sawEnumeration(const std::string& className) { seen_.enumerated.insert(className); }

  // A collector was needed for another one's class, and why it did not answer.
  void sawFailure(const std::string& collector, const std::string& why);
  // The same of a collector that is not there, where only a machine file can mean that.
  void sawNone(const std::string& collector);

  // What came of the next class of the request, but for its instances.
  void sawOutcome(ClassOutcome outcome) { outcomes_.push_back(std::move(outcome)); }

  // The states of the result's classes, each of which had an outcome, and how the collectors did.
  void conclude(NKRXVEL20::host::CimNamespace& ns, bool keepSteps, QueryResult& result);

 private:
  void takeRefusedCalls(NKRXVEL20::host::CimNamespace& ns);
  Observations observed(NKRXVEL20::host::CimNamespace& ns);

  bool isLive_;
  std::shared_ptr<const std::optional<NKRXVEL20::host::SilentBmc>> silence_;
  Observations seen_;  // since Init; the platform keeps the rest

  // Of the request that is being made.
  std::vector<ClassOutcome> outcomes_;
  std::vector<CollectorState> answers_;
};

}  // namespace velhost
