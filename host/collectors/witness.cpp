// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/witness.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "host/collectors/requesterror.h"
#include "host/reasons/classreason.h"
#include "host/reasons/words.h"
#include "vel/exception.h"
#include "vel/osspecific.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

constexpr std::size_t kMostRefusals = 1024;  // kinds of calls

bool isSameKind(const host::RefusedCall& a, const host::RefusedCall& b) {
  return std::tie(a.operation, a.className, a.propertyName) ==
         std::tie(b.operation, b.className, b.propertyName);
}

bool isRefusal(const RequestError& error) { return error.code == NKRXVEL20::kErrorClassNotServed; }

bool lacksSomething(const ClassState& state) {
  return state.state == State::kPartial || isTrouble(state.state);
}

}  // namespace

Witness::Witness(const Machine& machine, std::chrono::milliseconds timeLimit)
    : isLive_(machine.source == "live"), silence_(machine.silence) {
  seen_.refused = machine.refused;
  seen_.timeLimit = timeLimit;
}

void Witness::begin(bool init) {
  outcomes_.clear();
  answers_.clear();
  std::erase_if(seen_.refusedCalls, [&](const host::RefusedCall& call) {
    return init || call.operation == host::CimOperation::kAddToClass;
  });
  if (!init) return;
  seen_.enumerated.clear();
  seen_.failedCollectors.clear();
  host::forgetDriverUse();
}

// A class that a collector does not serve is an answer too.
void Witness::sawAnswer(const PluginIdentity& collector, const std::optional<RequestError>& error) {
  const auto known = std::ranges::find(answers_, collector.name, &CollectorState::name);
  CollectorState& state =
      known == answers_.end()
          ? answers_.emplace_back(CollectorState{collector.name, collector.version, true, ""})
          : *known;
  if (!error || isRefusal(*error) || !state.hasAnswered) return;
  state.hasAnswered = false;
  state.reason = reasonLine("it ended in " + errorText(*error));
}

void Witness::sawFailure(const std::string& collector, const std::string& why) {
  seen_.failedCollectors[collector] = why;
}

void Witness::sawNone(const std::string& collector) {
  if (isLive_) sawFailure(collector, "its collector " + collector + " is not there");
}

void Witness::takeRefusedCalls(host::CimNamespace& ns) {
  for (host::RefusedCall& call : ns.takeRefusedCalls()) {
    const auto known = std::ranges::find_if(
        seen_.refusedCalls,
        [&](const host::RefusedCall& other) { return isSameKind(call, other); });
    if (known != seen_.refusedCalls.end()) {
      known->count += call.count;
    } else if (seen_.refusedCalls.size() < kMostRefusals) {
      seen_.refusedCalls.push_back(std::move(call));
    }
  }
}

Observations Witness::observed(host::CimNamespace& ns) {
  takeRefusedCalls(ns);
  Observations seen = seen_;
  NKRXVEL20::SPLibrary* const driver = NKRXVEL20::SPLibrary::GetSplibraryInstance(0);
  seen.driver = host::driverUse();
  seen.components = host::componentsAsked();
  seen.hasDriver = driver != nullptr;
  seen.hasIpmiDevice = !isLive_ || driver == nullptr || driver->IsIPMIDriversPresent();
  seen.machineType = NKRXVEL20::TOSSpecific::GetMachineTypeFromID();
  seen.smbios = host::smbiosTable();
  if (silence_) seen.silence = *silence_;
  seen.instancesOf = [&ns](const std::string& name) { return ns.instancesOf(name); };
  return seen;
}

void Witness::conclude(host::CimNamespace& ns, bool keepSteps, QueryResult& result) {
  const Observations seen = observed(ns);
  for (std::size_t i = 0; i < result.requested.size(); ++i) {
    ClassOutcome& outcome = outcomes_[i];
    for (const auto& row : result.instances) {
      if (row.className == result.requested[i]) outcome.instances.push_back(&row.properties);
    }
    const host::ClassSchema& cimClass = *host::findClass(result.requested[i]);
    result.states.push_back(stateOf(cimClass, outcome, seen));
    if (keepSteps) result.states.back().steps = failedSteps(cimClass, outcome, seen);
  }
  result.collectors = std::exchange(answers_, {});
  result.isCutOff = seen.driver.isCutOff && std::ranges::any_of(result.states, lacksSomething);
}

}  // namespace velhost
