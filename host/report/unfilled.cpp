// SPDX-License-Identifier: Apache-2.0
#include "host/report/unfilled.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "host/formats/element.h"
#include "host/reasons/origin.h"
#include "host/text/hextext.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::findProperty;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::TrafficEntry;

constexpr std::string_view kNumber = " {n}";
constexpr std::string_view kLabel = "{label}";
constexpr std::uint64_t kMostPlaces = 1024;  // of a kind: numbers come from outside

// A kind of component of a class, by the templates of its Name: "{label}DIMM {n}". No other text of an
// origin begins so.
struct ComponentKind {
  std::string className;
  std::string word;         // "DIMM"
  bool isNumbered = false;  // its instances' names have their numbers
  Bytes command;            // that reads one of them,
  bool hasNumber = false;   // with its number as one more byte
};

// The commands under the condition that the instance is of the kind.
void addCommand(const PropertySchema& property, ComponentKind& kind) {
  for (const Origin& origin : originsOf(property)) {
    const auto tellsKind = [&](const Condition& condition) {
      return condition.property == "Name" && condition.kind == Condition::Kind::kHas &&
             condition.text == kind.word;
    };
    if (origin.source != Source::kDotCommand) continue;
    if (std::ranges::none_of(origin.conditions, tellsKind)) continue;
    kind.command = origin.command;
    kind.hasNumber = origin.isNumbered;
    return;
  }
}

std::optional<ComponentKind> kindOf(const ClassSchema& cimClass, std::string_view shape) {
  if (!shape.starts_with(kLabel)) return std::nullopt;
  shape.remove_prefix(kLabel.size());
  ComponentKind kind;
  kind.className = cimClass.name;
  kind.isNumbered = shape.ends_with(kNumber);
  if (kind.isNumbered) shape.remove_suffix(kNumber.size());
  kind.word = shape;
  for (const PropertySchema& property : cimClass.properties) {
    if (kind.command.empty()) addCommand(property, kind);
  }
  return kind;
}

std::vector<ComponentKind> componentKinds(const std::string& className) {
  std::vector<ComponentKind> kinds;
  const ClassSchema* const cimClass = findClass(className);
  const PropertySchema* const name =
      cimClass == nullptr ? nullptr : findProperty(*cimClass, "Name");
  if (name == nullptr) return kinds;
  for (const Origin& origin : originsOf(*name)) {
    if (auto kind = kindOf(*cimClass, origin.text)) kinds.push_back(std::move(*kind));
  }
  return kinds;
}

// What became of a place, over all the commands that were sent for it.
struct Asked {
  bool isFilled = false;
  bool isEmpty = false;  // answered, with nothing
};
using AskedPlaces = std::map<std::pair<int, Bytes>, Asked>;  // by SP and command

bool isFor(const ComponentKind& kind, const TrafficEntry& entry) {
  const std::size_t size = kind.command.size() + (kind.hasNumber ? 1 : 0);
  return entry.kind == TrafficEntry::Kind::kDotCommand && entry.command.size() == size &&
         std::equal(kind.command.begin(), kind.command.end(), entry.command.begin());
}

AskedPlaces askedPlaces(const ComponentKind& kind, const std::vector<TrafficEntry>& traffic) {
  AskedPlaces places;
  for (const TrafficEntry& entry : traffic) {
    if (!isFor(kind, entry)) continue;
    Asked& asked = places[{entry.sp, entry.command}];
    asked.isFilled = asked.isFilled || (entry.answered && entry.length > 0);
    asked.isEmpty = asked.isEmpty || (entry.answered && entry.length <= 0);
  }
  return places;
}

std::string titleOf(const ComponentKind& kind, std::uint64_t number) {
  return kind.isNumbered ? kind.word + ' ' + std::to_string(number) : kind.word;
}

Unfilled unfilledOf(const ComponentKind& kind, int sp, const Bytes& command, const Asked& asked) {
  Unfilled place{kind.className, static_cast<std::uint64_t>(sp) + 1, titleOf(kind, command.back()),
                 Unfilled::Why::kEmpty, ""};
  if (asked.isEmpty) return place;
  place.why = kind.hasNumber ? Unfilled::Why::kUntold : Unfilled::Why::kUnanswered;
  place.reason = "command " + hexPairs(command) + " was not answered";
  if (kind.hasNumber) place.reason += "; an empty slot looks so";
  return place;
}

void addFromTraffic(const ComponentKind& kind, const QueryResult& result,
                    std::vector<Unfilled>& places) {
  if (kind.command.empty()) return;
  for (const auto& [key, asked] : askedPlaces(kind, result.traffic)) {
    if (!asked.isFilled) places.push_back(unfilledOf(kind, key.first, key.second, asked));
  }
}

using NumbersByNode = std::map<std::uint64_t, std::set<std::uint64_t>>;  // node 0: of none

NumbersByNode numbersOf(const ComponentKind& kind, const QueryResult& result) {
  NumbersByNode numbers;
  for (const auto& instance : result.instances) {
    if (instance.className != kind.className) continue;
    const auto [word, number] = numberedTitle(withoutNode(nameOf(instance)));
    if (word != kind.word || number == 0 || number > kMostPlaces) continue;
    numbers[nodeOf(instance).value_or(0)].insert(number);
  }
  return numbers;
}

// How many numbers each node has at least, if they run on from node to node; nullopt: they do not.
std::optional<std::uint64_t> numbersEach(const NumbersByNode& numbers) {
  std::uint64_t each = 0;
  for (const auto& [node, some] : numbers) {
    if (node == 0) return std::nullopt;
    each = std::max(each, (*some.rbegin() + node - 1) / node);
  }
  const bool runsOn = std::ranges::all_of(
      numbers, [each](const auto& row) { return *row.second.begin() > (row.first - 1) * each; });
  return runsOn ? std::optional(each) : std::nullopt;
}

void addLeftOut(const ComponentKind& kind, const QueryResult& result,
                std::vector<Unfilled>& places) {
  const NumbersByNode numbers = numbersOf(kind, result);
  const auto each = numbersEach(numbers);
  for (const auto& [node, some] : numbers) {
    const std::uint64_t first = each ? (node - 1) * *each + 1 : 1;
    const std::uint64_t last = each ? node * *each : *some.rbegin();
    for (std::uint64_t number = first; number <= last; ++number) {
      if (some.contains(number)) continue;
      places.push_back({kind.className, node == 0 ? std::nullopt : std::optional(node),
                        titleOf(kind, number), Unfilled::Why::kUntold, ""});
    }
  }
}

bool readNumber(std::string_view digits, std::uint64_t& number) {
  const char* const end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, number);
  return error == std::errc() && rest == end;
}

}  // namespace

std::vector<Unfilled> unfilledPlaces(const QueryResult& result) {
  std::vector<Unfilled> places;
  for (const ClassState& state : result.states) {
    for (const ComponentKind& kind : componentKinds(state.className)) {
      if (!result.traffic.empty()) {
        addFromTraffic(kind, result, places);
      } else if (kind.isNumbered) {
        addLeftOut(kind, result, places);
      }
    }
  }
  return places;
}

std::vector<std::uint64_t> askedNodes(const QueryResult& result) {
  std::set<std::uint64_t> nodes;
  for (const TrafficEntry& entry : result.traffic) {
    if (entry.kind != TrafficEntry::Kind::kDotCommand || entry.sp < 0) continue;
    nodes.insert(static_cast<std::uint64_t>(entry.sp) + 1);
  }
  return {nodes.begin(), nodes.end()};
}

NumberedTitle numberedTitle(const std::string& title) {
  const std::size_t blank = title.rfind(' ');
  NumberedTitle numbered{title, 0};
  if (blank == std::string::npos) return numbered;
  if (readNumber(std::string_view(title).substr(blank + 1), numbered.number)) {
    numbered.word.resize(blank);
  } else {
    numbered.number = 0;
  }
  return numbered;
}

}  // namespace velhost
