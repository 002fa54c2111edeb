// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/comparison.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "host/comparison/exchangednodes.h"
#include "host/comparison/seeninstance.h"
#include "host/formats/element.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

using Seen = std::vector<SeenInstance>;

// The instances of a class that have no counterpart yet.
struct Sides {
  Seen before;
  Seen after;
};

struct Pair {
  SeenInstance before;
  SeenInstance after;
};

void forgetTaken(Seen& seen) {
  std::erase_if(seen, [](const SeenInstance& one) { return one.instance == nullptr; });
}

SeenInstance taken(SeenInstance& one) {
  SeenInstance result = one;
  one.instance = nullptr;
  return result;
}

// Takes out of both sides those whose texts are equal, in order; an empty one is equal to none.
std::vector<Pair> takePairs(Sides& sides, std::string SeenInstance::*text) {
  std::map<std::string_view, std::deque<SeenInstance*>> waiting;
  for (SeenInstance& one : sides.after) {
    if (!(one.*text).empty()) waiting[one.*text].push_back(&one);
  }
  std::vector<Pair> pairs;
  for (SeenInstance& one : sides.before) {
    const auto found = waiting.find(one.*text);
    if (found == waiting.end() || found->second.empty()) continue;
    pairs.push_back({taken(one), taken(*found->second.front())});
    found->second.pop_front();
  }
  forgetTaken(sides.before);
  forgetTaken(sides.after);
  return pairs;
}

// A unit that two claim to be, or that has no place, is none.
void forgetDoubtfulUnits(Seen& seen) {
  std::map<std::string, std::size_t> counts;
  for (const SeenInstance& one : seen) ++counts[one.unit];
  for (SeenInstance& one : seen) {
    if (counts[one.unit] > 1 || one.key.empty()) one.unit.clear();
  }
}

Seen seenOf(const std::vector<const PublishedInstance*>& instances, Texts texts) {
  Seen result;
  for (const PublishedInstance* const instance : instances) {
    result.push_back(seen(*instance, texts));
  }
  forgetDoubtfulUnits(result);
  return result;
}

// Where nodes have other numbers than before, what stands on a node is known by the node.
void giveNodesAsUnits(Seen& seen, const NodeMap& nodes, Texts texts) {
  for (SeenInstance& one : seen) {
    const auto node = nodeOf(*one.instance);
    if (!one.unit.empty() || !node) continue;
    const auto found = nodes.find(*node);
    if (found != nodes.end()) one.unit = keyOnNode(*one.instance, found->second, texts);
  }
  forgetDoubtfulUnits(seen);
}

// Where a unit came to a slot that is told although it is empty, the emptiness went to where it left.
void takeEmptyPlaces(Sides& sides, const std::vector<Pair>& moved) {
  std::set<std::string> left;
  std::set<std::string> reached;
  for (const Pair& pair : moved) {
    left.insert(pair.before.key);
    reached.insert(pair.after.key);
  }
  for (SeenInstance& one : sides.before) {
    if (!reached.contains(one.key)) one.placed.clear();
  }
  for (SeenInstance& one : sides.after) {
    if (!left.contains(one.key)) one.placed.clear();
  }
  takePairs(sides, &SeenInstance::placed);
}

bool isSame(const TCIMValue* before, const TCIMValue* after, Texts texts) {
  if (before == nullptr || after == nullptr) return before == after;
  return seenText(*before, texts) == seenText(*after, texts);
}

std::vector<PropertyChange> changesOf(const PropertyList& before, const PropertyList& after,
                                      Texts texts) {
  std::map<std::string_view, const TCIMValue*> others;
  for (const auto& [name, value] : after) others[name] = &value;
  std::vector<PropertyChange> changes;
  for (const auto& [name, value] : before) {
    const auto other = others.find(name);
    const TCIMValue* const now = other == others.end() ? nullptr : other->second;
    if (!isSame(&value, now, texts)) changes.push_back({name, &value, now});
    if (other != others.end()) other->second = nullptr;
  }
  for (const auto& [name, value] : after) {
    if (others[name] != nullptr) changes.push_back({name, nullptr, &value});
  }
  return changes;
}

InstanceChange changeOf(const Pair& pair, Texts texts) {
  const PublishedInstance& before = *pair.before.instance;
  const PublishedInstance& after = *pair.after.instance;
  return {&before, &after, changesOf(before.properties, after.properties, texts)};
}

InstanceChange moveOf(const Pair& pair, Texts texts) {
  InstanceChange move = changeOf(pair, texts);
  const std::string& name = move.before->className;
  std::erase_if(move.properties,
                [&](const PropertyChange& change) { return tellsPlace(name, change.name); });
  return move;
}

void compareInstances(Sides sides, Texts texts, ClassComparison& result) {
  takePairs(sides, &SeenInstance::all);
  std::vector<Pair> changed;
  std::vector<Pair> moved;
  for (Pair& pair : takePairs(sides, &SeenInstance::unit)) {
    (pair.before.key == pair.after.key ? changed : moved).push_back(std::move(pair));
  }
  std::ranges::move(takePairs(sides, &SeenInstance::key), std::back_inserter(changed));
  takeEmptyPlaces(sides, moved);
  for (const Pair& pair : changed) result.changed.push_back(changeOf(pair, texts));
  for (const Pair& pair : moved) result.moved.push_back(moveOf(pair, texts));
  for (const SeenInstance& one : sides.before) result.went.push_back(one.instance);
  for (const SeenInstance& one : sides.after) result.came.push_back(one.instance);
}

// Of one side, by class.
struct ClassFindings {
  const ClassState* state = nullptr;
  std::vector<const PublishedInstance*> instances;
};

using FindingsByClass = std::map<std::string, ClassFindings>;

FindingsByClass byClass(const QueryResult& result) {
  FindingsByClass classes;
  for (const ClassState& state : result.states) classes[state.className].state = &state;
  for (const PublishedInstance& instance : result.instances) {
    const auto found = classes.find(instance.className);
    if (found != classes.end()) found->second.instances.push_back(&instance);
  }
  return classes;
}

bool isTroubled(const ClassState* state) { return state != nullptr && isTrouble(state->state); }

// What the two say of a class that has no instances in either is a difference only where both tell
// states. A class that is not in one of them says that there is none, if anything.
bool isOtherState(const ClassFindings& before, const ClassFindings& after, bool bothTell) {
  const bool isEither = before.state != nullptr && after.state != nullptr;
  if (isEither && before.state->state == after.state->state) return false;
  if (isEither && bothTell) return true;
  if (!isTroubled(before.state) && !isTroubled(after.state)) return false;
  return bothTell || !(before.instances.empty() && after.instances.empty());
}

// How the two are read.
struct Reading {
  Texts texts = Texts::kAsUtf8;
  bool bothTell = false;  // the states of their classes
  NodeMap before;         // of each node the one that it is known as
  NodeMap after;
};

Sides sidesOf(const ClassFindings& before, const ClassFindings& after, const Reading& reading) {
  Sides sides{seenOf(before.instances, reading.texts), seenOf(after.instances, reading.texts)};
  giveNodesAsUnits(sides.before, reading.before, reading.texts);
  giveNodesAsUnits(sides.after, reading.after, reading.texts);
  return sides;
}

ClassComparison comparedClass(const std::string& name, const ClassFindings& before,
                              const ClassFindings& after, const Reading& reading) {
  ClassComparison result{.className = name, .before = before.state, .after = after.state};
  result.isCompared = !isTroubled(before.state) && !isTroubled(after.state);
  result.hasOtherState = isOtherState(before, after, reading.bothTell);
  result.countBefore = before.instances.size();
  result.countAfter = after.instances.size();
  if (result.isCompared) {
    compareInstances(sidesOf(before, after, reading), reading.texts, result);
  }
  return result;
}

// Only what was never a document has other bytes than UTF-8.
bool hasBytes(const Findings& findings) {
  return std::ranges::any_of(findings.result.instances, [](const PublishedInstance& instance) {
    return std::ranges::any_of(instance.properties,
                               [](const auto& p) { return !isUtf8(p.second.ToString()); });
  });
}

Reading readingOf(const Findings& before, const Findings& after) {
  Reading reading;
  if (hasBytes(before) && hasBytes(after)) reading.texts = Texts::kAsTheyAre;
  reading.bothTell = before.tellsStates && after.tellsStates;
  reading.after = exchangedNodes(before.result, after.result);
  for (const auto& pair : reading.after) reading.before[pair.second] = pair.second;
  return reading;
}

std::vector<std::string> classesOf(const QueryResult& before, const QueryResult& after) {
  std::vector<std::string> names;
  std::set<std::string> known;
  for (const QueryResult* const result : {&before, &after}) {
    for (const std::string& name : result->requested) {
      if (known.insert(name).second) names.push_back(name);
    }
  }
  return names;
}

}  // namespace

bool Comparison::isDifferent() const {
  return std::ranges::any_of(classes, &ClassComparison::isDifferent);
}

Comparison compared(const Findings& before, const Findings& after) {
  const Reading reading = readingOf(before, after);
  FindingsByClass old = byClass(before.result);
  FindingsByClass now = byClass(after.result);
  Comparison comparison;
  for (const std::string& name : classesOf(before.result, after.result)) {
    comparison.classes.push_back(comparedClass(name, old[name], now[name], reading));
  }
  return comparison;
}

}  // namespace velhost
