// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/instancesource.h"

#include <algorithm>

#include "host/machine/machinenames.h"
#include "host/reasons/words.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;
using NKRXVEL20::host::RefusedCall;

constexpr std::string_view kHas = "has ";

// That the class's instances could not be had; otherwise not looked.
Verdict classTrouble(const std::string& className, const Observations& seen) {
  if (const RefusedCall* const call = firstRefusedCall(className, seen)) {
    return trouble(State::kFailed, refusedCallText(*call));
  }
  const auto* const cimClass = NKRXVEL20::host::findClass(className);
  if (cimClass == nullptr) return {};
  const auto failed = seen.failedCollectors.find(std::string(cimClass->provider));
  if (failed == seen.failedCollectors.end()) return {};
  return trouble(State::kFailed, className + " is missing: " + failed->second);
}

Verdict classVerdict(const std::string& className, const Observations& seen) {
  Verdict verdict = classTrouble(className, seen);
  if (verdict.kind == Verdict::Kind::kTrouble) return verdict;
  if (!seen.enumerated.contains(className)) return {};
  if (seen.instancesOf(className).empty()) return none("there is no " + className);
  return looked(className + " was read, and names none");
}

}  // namespace

std::string refusedCallText(const RefusedCall& call) {
  std::string text = "the framework refused ";
  text += nameIn(kOperations, call.operation);
  text += " of " + call.className;
  if (!call.propertyName.empty()) text += '.' + call.propertyName;
  return text + ' ' + timesText(call.count);
}

const RefusedCall* firstRefusedCall(std::string_view className, const Observations& seen) {
  const auto found = std::ranges::find(seen.refusedCalls, className, &RefusedCall::className);
  return found == seen.refusedCalls.end() ? nullptr : &*found;
}

Verdict instanceVerdict(std::span<const Origin> origins, const Observations& seen) {
  Verdict worst;
  for (const Origin& origin : origins) {
    Verdict verdict = classVerdict(std::string(origin.className), seen);
    if (verdict.kind > worst.kind) worst = std::move(verdict);
  }
  return worst;
}

Verdict presenceVerdict(const Origin& origin, const Observations& seen) {
  if (origin.source != Source::kInstance || !origin.rule.starts_with(kHas)) return {};
  const std::string className(origin.className);
  const std::string_view text = origin.rule.substr(kHas.size());
  const auto instances = seen.instancesOf(className);
  const bool isThere = std::ranges::any_of(instances, [&](const PublishedInstance& instance) {
    return valueText(instance.properties, origin.propertyName).find(text) != std::string::npos;
  });
  if (isThere) return looked(className + " has one");
  Verdict verdict = classTrouble(className, seen);
  if (verdict.kind == Verdict::Kind::kTrouble) return verdict;
  return none("no " + className + " has " + quoted(text) + " in its " +
              std::string(origin.propertyName));
}

}  // namespace velhost
