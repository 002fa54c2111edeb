// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/classreason.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/reasons/commandsource.h"
#include "host/reasons/fixedvalue.h"
#include "host/reasons/instancesource.h"
#include "host/reasons/origin.h"
#include "host/reasons/smbiossource.h"
#include "host/reasons/words.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::TextList;
using Origins = std::vector<Origin>;
using Kind = Verdict::Kind;

struct Reason {
  State state = State::kPresent;
  std::string text = {};
};

// Why a class ended as it did, as far as one of the questions below can tell.
using Answer = std::optional<Reason>;

struct Case {
  const ClassSchema& cimClass;
  const ClassOutcome& outcome;
  const Observations& seen;
};

TextList qualifierValues(const ClassSchema& cimClass, std::string_view name) {
  const auto found =
      std::ranges::find_if(cimClass.qualifiers, [&](const NKRXVEL20::host::Qualifier& qualifier) {
        return qualifier.declaration->name == name;
      });
  return found == cimClass.qualifiers.end() ? TextList() : found->values;
}

bool isFixed(const Origin& origin) {
  return origin.source == Source::kConstant || origin.source == Source::kDerived;
}

// All lines that tell of a source outside.
Origins allSources(const ClassSchema& cimClass) {
  Origins sources;
  for (const PropertySchema& property : cimClass.properties) {
    Origins origins = originsOf(property);
    std::erase_if(origins, isFixed);
    std::ranges::move(origins, std::back_inserter(sources));
  }
  return sources;
}

// Those of properties that have no value without a source: a class without instances wants for one
// of them. Where there are none, all.
Origins neededSources(const ClassSchema& cimClass) {
  Origins sources;
  for (const PropertySchema& property : cimClass.properties) {
    Origins origins = originsOf(property);
    if (std::ranges::any_of(origins, isFixed)) continue;
    std::ranges::move(origins, std::back_inserter(sources));
  }
  return sources.empty() ? allSources(cimClass) : sources;
}

// Each source is taken once.
Origins takeSource(Origins& origins, Source source) {
  Origins taken;
  for (Origin& origin : origins) {
    if (origin.source == source) taken.push_back(std::move(origin));
  }
  return taken;
}

// Sources that only their collector sees.
Verdict unseenVerdict(const Origins& origins, const Observations& /*seen*/) {
  std::vector<std::string> names;
  for (const Origin& origin : origins) {
    const std::string name(origin.text.empty() ? origin.line : origin.text);
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  return looked("its collector found no " + listText(names));
}

Verdict commands(const Origins& origins, const Observations& seen) {
  return commandVerdict(origins, seen);
}
Verdict structures(const Origins& origins, const Observations& seen) {
  return smbiosVerdict(origins, seen);
}
Verdict instances(const Origins& origins, const Observations& seen) {
  return instanceVerdict(origins, seen);
}

struct SourceRow {
  Verdict (*verdict)(const Origins&, const Observations&);
  Source source;
  bool isAskedPieceByPiece;  // what it refuses is one of many things, and shows in no instance
};

constexpr SourceRow kSources[] = {
    {commands, Source::kDotCommand, true},  {commands, Source::kTamberCommand, true},
    {commands, Source::kIpmi, true},        {commands, Source::kIpmiRepository, true},
    {commands, Source::kIpmiFru, true},     {structures, Source::kSmbios, false},
    {instances, Source::kInstance, false},  {unseenVerdict, Source::kSysfs, false},
    {unseenVerdict, Source::kOther, false},
};

bool holdsForOne(const Origin& origin, const ClassOutcome& outcome) {
  return std::ranges::any_of(
      outcome.instances, [&](const PropertyList* instance) { return holdsFor(origin, *instance); });
}

// What each kind of source has to say to a class without instances.
std::vector<Verdict> verdictsOfNeeded(const Case& c) {
  std::vector<Verdict> verdicts;
  Origins needed = neededSources(c.cimClass);
  for (const SourceRow& row : kSources) {
    const Origins origins = takeSource(needed, row.source);
    if (!origins.empty()) verdicts.push_back(row.verdict(origins, c.seen));
  }
  return verdicts;
}

// The same to one that has instances: only what may have been read for one of them.
std::vector<Verdict> verdictsOfInstances(const Case& c) {
  std::vector<Verdict> verdicts;
  Origins all = allSources(c.cimClass);
  for (const SourceRow& row : kSources) {
    Origins origins = takeSource(all, row.source);
    std::erase_if(origins, [&](const Origin& origin) {
      return !row.isAskedPieceByPiece && !holdsForOne(origin, c.outcome);
    });
    if (!origins.empty()) verdicts.push_back(row.verdict(origins, c.seen));
  }
  return verdicts;
}

// The worst trouble among them; null: none of them is in trouble.
const Verdict* worstTrouble(const std::vector<Verdict>& verdicts) {
  const Verdict* worst = nullptr;
  for (const Verdict& verdict : verdicts) {
    if (verdict.kind != Kind::kTrouble) continue;
    if (worst == nullptr || verdict.state > worst->state) worst = &verdict;
  }
  return worst;
}

Answer failed(const Case& c) {
  if (c.outcome.failure.empty()) return std::nullopt;
  return Reason{State::kFailed, c.outcome.failure};
}

Answer given(const Case& c) {
  if (!c.outcome.isGiven) return std::nullopt;
  return Reason{State::kAbsent, "the machine file lists none"};
}

Answer refusedByFramework(const Case& c) {
  const auto* const call = firstRefusedCall(c.cimClass.name, c.seen);
  if (call == nullptr) return std::nullopt;
  return Reason{State::kFailed, refusedCallText(*call)};
}

Answer unused(const Case& c) {
  const auto& properties = c.cimClass.properties;
  if (std::ranges::any_of(properties, [](const PropertySchema& property) {
        return !property.mappingStrings.empty();
      })) {
    return std::nullopt;
  }
  return Reason{State::kUnused, "no collector ever fills it"};
}

bool answersIpmi(const Observations& seen) {
  return seen.driver.hasIpmiDrivers == true && seen.driver.hasBmc == true;
}

// LeftTo: a class, then what its collector may have instead of instances already.
Answer elsewhere(const Case& c) {
  const TextList left = qualifierValues(c.cimClass, "LeftTo");
  if (left.empty()) return std::nullopt;
  const std::string other(left.front());
  const std::size_t count = c.seen.instancesOf(other).size();
  if (count > 0) {
    return Reason{State::kElsewhere, "left to " + other + ", which has " + std::to_string(count)};
  }
  const bool isByIpmi = std::ranges::find(left, "IPMI.VEL") != left.end();
  if (!isByIpmi || !answersIpmi(c.seen)) return std::nullopt;
  return Reason{State::kElsewhere, "left to " + other + ", as a BMC answers"};
}

// A type that has one of the codes in it counts.
bool isOneOf(const TextList& codes, const std::string& type) {
  return std::ranges::any_of(
      codes, [&](std::string_view code) { return type.find(code) != std::string::npos; });
}

Answer otherMachineType(const Case& c) {
  const TextList types = qualifierValues(c.cimClass, "MachineTypes");
  const std::string& type = c.seen.machineType;
  if (types.empty() || isOneOf(types, type)) return std::nullopt;
  const Verdict unread = smbiosTrouble(c.seen);
  if (type.empty() && unread.kind == Kind::kTrouble) return Reason{unread.state, unread.reason};
  if (type.empty())
    return Reason{State::kAbsent, "the machine type is not known, and only some have one"};
  return Reason{State::kAbsent, "machines of type " + type + " have none"};
}

Answer notOnThisMachine(const Case& c) {
  for (const std::string_view line : qualifierValues(c.cimClass, "MappingStrings")) {
    const Verdict verdict = presenceVerdict(originOf(line), c.seen);
    if (verdict.kind == Kind::kNone) return Reason{State::kAbsent, verdict.reason};
    if (verdict.kind == Kind::kTrouble) return Reason{verdict.state, verdict.reason};
  }
  return std::nullopt;
}

std::string joined(const std::vector<Verdict>& verdicts) {
  std::string text;
  for (const Verdict& verdict : verdicts) {
    if (verdict.reason.empty() || text.find(verdict.reason) != std::string::npos) continue;
    if (!text.empty()) text += "; ";
    text += verdict.reason;
  }
  return text;
}

Answer sources(const Case& c) {
  const auto verdicts = verdictsOfNeeded(c);
  if (const Verdict* const worst = worstTrouble(verdicts))
    return Reason{worst->state, worst->reason};
  const bool isLooked = std::ranges::any_of(
      verdicts, [](const Verdict& verdict) { return verdict.kind != Kind::kNotLooked; });
  if (!isLooked) return Reason{State::kUnused, "its collector asks none of its sources"};
  return Reason{State::kAbsent, joined(verdicts)};
}

// The first that knows says why a class has no instances.
constexpr Answer (*kWithoutInstances[])(const Case&) = {
    failed,           refusedByFramework, given,   unused, elsewhere,
    otherMachineType, notOnThisMachine,   sources,
};

Answer fixedValue(const Case& c) {
  auto text = fixedValueReason(c.cimClass, c.outcome, c.seen);
  if (!text) return std::nullopt;
  return Reason{State::kPartial, *std::move(text)};
}

Answer sourceInTrouble(const Case& c) {
  const auto verdicts = verdictsOfInstances(c);
  const Verdict* const worst = worstTrouble(verdicts);
  if (worst == nullptr) return std::nullopt;
  const std::string hint = worst->hint.empty() ? "" : "; " + worst->hint;
  return Reason{State::kPartial, worst->reason + hint};
}

// What keeps a class that has instances from being complete.
constexpr Answer (*kWithInstances[])(const Case&) = {
    failed,
    refusedByFramework,
    fixedValue,
    sourceInTrouble,
};

Reason reasonOf(const Case& c) {
  if (c.outcome.instances.empty()) {
    for (const auto answer : kWithoutInstances) {
      if (auto reason = answer(c)) return *std::move(reason);
    }
  }
  if (c.outcome.isGiven) return {};
  for (const auto answer : kWithInstances) {
    if (auto reason = answer(c)) return {State::kPartial, std::move(reason->text)};
  }
  return {};
}

void addRefusedCalls(const Case& c, std::vector<std::string>& steps) {
  for (const auto& call : c.seen.refusedCalls) {
    if (call.className == c.cimClass.name) steps.push_back(refusedCallText(call));
  }
}

// What a source failed in: each of its commands that was sent, otherwise the reason of its trouble.
void addSource(const Origins& origins, const SourceRow& row, const Observations& seen,
               std::vector<std::string>& steps) {
  const auto refused = refusedCommands(origins, seen);
  steps.insert(steps.end(), refused.begin(), refused.end());
  if (!refused.empty()) return;
  const Verdict verdict = row.verdict(origins, seen);
  if (verdict.kind == Kind::kTrouble) steps.push_back(verdict.reason);
}

}  // namespace

std::vector<std::string> failedSteps(const ClassSchema& cimClass, const ClassOutcome& outcome,
                                     const Observations& seen) {
  std::vector<std::string> steps;
  if (!outcome.failure.empty()) steps.push_back(outcome.failure);
  addRefusedCalls({cimClass, outcome, seen}, steps);
  Origins all = allSources(cimClass);
  for (const SourceRow& row : kSources) {
    const Origins origins = takeSource(all, row.source);
    if (!origins.empty()) addSource(origins, row, seen, steps);
  }
  for (std::string& step : steps) step = reasonLine(step);
  return steps;
}

ClassState stateOf(const ClassSchema& cimClass, const ClassOutcome& outcome,
                   const Observations& seen) {
  const Reason reason = reasonOf({cimClass, outcome, seen});
  return {std::string(cimClass.name), outcome.collector, reason.state, reasonLine(reason.text)};
}

}  // namespace velhost
