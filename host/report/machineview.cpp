// SPDX-License-Identifier: Apache-2.0
#include "host/report/machineview.h"

#include <algorithm>
#include <set>
#include <span>
#include <utility>

#include "host/formats/classentries.h"
#include "host/formats/element.h"
#include "host/formats/shownvalue.h"
#include "host/report/partlines.h"
#include "host/report/unfilled.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::PublishedInstance;

// In the order of Filling.
constexpr std::string_view kFillingNames[] = {
    "present", "partial",    "empty",      "not told",  "absent", "elsewhere",
    "unused",  "unanswered", "unreadable", "forbidden", "failed",
};

constexpr std::pair<State, Filling> kFillings[] = {
    {State::kPresent, Filling::kFilled},        {State::kPartial, Filling::kPartial},
    {State::kAbsent, Filling::kAbsent},         {State::kElsewhere, Filling::kElsewhere},
    {State::kUnused, Filling::kUnused},         {State::kUnanswered, Filling::kUnanswered},
    {State::kUnreadable, Filling::kUnreadable}, {State::kForbidden, Filling::kForbidden},
    {State::kFailed, Filling::kFailed},
};

constexpr std::pair<Unfilled::Why, Filling> kUnfilledFillings[] = {
    {Unfilled::Why::kEmpty, Filling::kEmpty},
    {Unfilled::Why::kUnanswered, Filling::kUnanswered},
    {Unfilled::Why::kUntold, Filling::kUntold},
};

template <class Key>
Filling fillingIn(std::span<const std::pair<Key, Filling>> table, Key key) {
  return std::ranges::find(table, key, &std::pair<Key, Filling>::first)->second;
}

std::vector<Fact> factsOf(const PublishedInstance& instance) {
  std::vector<Fact> facts;
  const auto* const cimClass = findClass(instance.className);
  for (const auto& [name, value] : instance.properties) {
    std::string shown = shownValue(cimClass, name, value);
    if (!shown.empty()) facts.push_back({name, std::move(shown)});
  }
  return facts;
}

// The first date that is told: when it was built or released.
std::string dateOf(const PublishedInstance& instance) {
  const auto& properties = instance.properties;
  const auto date = std::ranges::find_if(properties, [](const auto& property) {
    return property.second.GetType() == ECIMType::kDateTime;
  });
  if (date == properties.end()) return "";
  return shownValue(findClass(instance.className), date->first, date->second);
}

bool isEmptySlot(const PublishedInstance& instance) {
  return std::ranges::any_of(instance.properties, [](const auto& property) {
    return property.first == "Populated" && property.second == TCIMValue(false);
  });
}

Item elementItem(const PublishedInstance& instance) {
  Item item;
  item.className = instance.className;
  item.title = classTitle(instance.className);
  item.name = withoutNode(nameOf(instance));
  item.version = versionOf(instance);
  item.build = buildOf(instance);
  item.date = dateOf(instance);
  item.properties = factsOf(instance);
  return item;
}

Item partItem(const PublishedInstance& instance) {
  Item item;
  item.className = instance.className;
  item.title = withoutNode(nameOf(instance));
  if (item.title.empty()) item.title = classTitle(instance.className);
  item.properties = factsOf(instance);
  item.lines = partLines(instance, item.properties);
  if (isEmptySlot(instance)) item.filling = Filling::kEmpty;
  return item;
}

// Nodes that are told apart: a machine with one node is one box, whatever says "node 1" of it.
class Boxes {
 public:
  void reserve(std::uint64_t node) { nodes_.insert(node); }

  std::vector<Item>& itemsAt(const std::optional<std::uint64_t>& node, Place place) {
    return boxOf(nodes_.size() > 1 ? node : std::nullopt).items[place];
  }

  bool isDivided() const { return nodes_.size() > 1; }
  const std::set<std::uint64_t>& nodes() const { return nodes_; }

  std::vector<Box> take() {
    std::vector<Box> boxes;
    for (auto& [node, box] : boxes_) boxes.push_back(std::move(box));
    if (hasWhole_) boxes.push_back(std::move(whole_));
    return boxes;
  }

 private:
  Box& boxOf(const std::optional<std::uint64_t>& node) {
    hasWhole_ = hasWhole_ || !node;
    if (!node) return whole_;
    boxes_[*node].node = node;
    return boxes_[*node];
  }

  std::set<std::uint64_t> nodes_;
  std::map<std::uint64_t, Box> boxes_;
  Box whole_;
  bool hasWhole_ = false;
};

void addInstance(const PublishedInstance& instance, const ClassState& state, Boxes& boxes,
                 MachineView& view) {
  const Place place = placeOf(instance);
  if (place == Place::kMachine) {
    std::ranges::move(factsOf(instance), std::back_inserter(view.facts));
    return;
  }
  const bool isElement = isForLevels(place);
  Item item = isElement ? elementItem(instance) : partItem(instance);
  if (isElement && state.state == State::kPartial) {
    item.filling = Filling::kPartial;
    item.reason = state.reason;
  }
  boxes.itemsAt(nodeOf(instance), place).push_back(std::move(item));
}

// A class without instances in the place where they would be.
void addMissing(const ClassState& state, bool tellsStates, Boxes& boxes) {
  Item item;
  item.className = state.className;
  item.title = classTitle(state.className);
  item.filling = shownFilling(state.state, tellsStates);
  item.reason = state.reason;
  const Place place = placeOfClass(state.className);
  boxes.itemsAt(std::nullopt, place == Place::kMachine ? Place::kOther : place)
      .push_back(std::move(item));
}

// Nodes that have nothing of a class that the others have.
void addMissingOnNodes(const ClassEntry& entry, Boxes& boxes) {
  std::set<std::uint64_t> lacking = boxes.nodes();
  const auto hasNode = [](const PublishedInstance* one) { return nodeOf(*one).has_value(); };
  const Place place = placeOfClass(entry.state->className);
  if (!isForLevels(place) || !boxes.isDivided()) return;
  if (std::ranges::none_of(entry.instances, hasNode)) return;
  for (const auto* const instance : entry.instances) lacking.erase(nodeOf(*instance).value_or(0));
  for (const std::uint64_t node : lacking) {
    Item item;
    item.className = entry.state->className;
    item.title = classTitle(item.className);
    item.filling = Filling::kUntold;
    item.reason = entry.state->reason;
    boxes.itemsAt(node, place).push_back(std::move(item));
  }
}

void addUnfilled(const Unfilled& place, Boxes& boxes) {
  Item item;
  item.className = place.className;
  item.title = place.title;
  item.filling = fillingIn<Unfilled::Why>(kUnfilledFillings, place.why);
  item.reason = place.reason;
  const PublishedInstance asIfThere{place.className, {{"Name", TCIMValue(place.title)}}};
  boxes.itemsAt(place.node, placeOf(asIfThere)).push_back(std::move(item));
}

// Parts of a kind stand together, by their numbers; kinds in the order in which they turn up.
void putInOrder(std::vector<Item>& parts) {
  std::map<std::string, std::size_t> ranks;
  std::vector<std::pair<std::pair<std::size_t, std::uint64_t>, Item>> keyed;
  for (Item& part : parts) {
    const auto [word, number] = numberedTitle(part.title);
    const std::size_t rank = ranks.emplace(word, ranks.size()).first->second;
    keyed.emplace_back(std::pair(rank, number), std::move(part));
  }
  std::ranges::stable_sort(keyed, {}, &decltype(keyed)::value_type::first);
  std::ranges::transform(keyed, parts.begin(), [](auto& row) { return std::move(row.second); });
}

void putInOrder(MachineView& view) {
  for (Box& box : view.boxes) {
    for (auto& [place, items] : box.items) {
      if (!isForLevels(place)) putInOrder(items);
    }
  }
}

void addEntry(const ClassEntry& entry, Boxes& boxes, MachineView& view) {
  view.classes.push_back({*entry.state, entry.instances.size()});
  for (const auto* const instance : entry.instances) {
    addInstance(*instance, *entry.state, boxes, view);
  }
  addMissingOnNodes(entry, boxes);
  const bool isMissing = entry.instances.empty() && entry.state->state != State::kUnused;
  if (isMissing) addMissing(*entry.state, view.tellsStates, boxes);
}

std::string factNamed(const std::vector<Fact>& facts, std::string_view name) {
  const auto fact = std::ranges::find(facts, name, &Fact::name);
  return fact == facts.end() ? "" : fact->value;
}

// What the machine tells of itself, or what one of its elements does.
std::string productOf(const MachineView& view, const QueryResult& result) {
  std::string product;
  const auto add = [&](const std::string& word, const char* before) {
    if (!word.empty()) product += (product.empty() ? "" : before) + word;
  };
  add(factNamed(view.facts, "Manufacturer"), "");
  add(factNamed(view.facts, "ProductName"), " ");
  add(factNamed(view.facts, "SerialNumber"), ", serial number ");
  if (!product.empty()) return product;
  for (const auto& instance : result.instances) {
    const auto facts = factsOf(instance);
    const std::string type = factNamed(facts, "MachineTypeModel");
    if (!type.empty()) return "type " + type;
  }
  return "";
}

}  // namespace

std::string_view fillingName(Filling filling) {
  return kFillingNames[static_cast<std::size_t>(filling)];
}

Filling shownFilling(State state, bool tellsStates) {
  const bool isGuess = !tellsStates && state == State::kAbsent;
  return isGuess ? Filling::kUntold : fillingIn<State>(kFillings, state);
}

MachineView machineView(const Findings& findings, const std::string& file) {
  const QueryResult& result = findings.result;
  MachineView view;
  view.name = findings.context.machineName;
  view.file = file;
  view.isLive = findings.context.machineSource == "live";
  view.tellsStates = findings.tellsStates;
  Boxes boxes;
  for (const auto& instance : result.instances) {
    if (const auto node = nodeOf(instance)) boxes.reserve(*node);
  }
  for (const std::uint64_t node : askedNodes(result)) boxes.reserve(node);
  for (const ClassEntry& entry : classEntries(result)) addEntry(entry, boxes, view);
  for (const Unfilled& place : unfilledPlaces(result)) addUnfilled(place, boxes);
  view.nodes = boxes.nodes().size();
  view.boxes = boxes.take();
  putInOrder(view);
  view.product = productOf(view, result);
  return view;
}

}  // namespace velhost
