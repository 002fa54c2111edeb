// SPDX-License-Identifier: Apache-2.0
#include "host/report/machinesection.h"

#include <map>
#include <string>

namespace velhost {
namespace {

constexpr std::size_t kLongestTitle = 200;
constexpr std::size_t kLongestLine = 400;

Html bdi(const std::string& text, std::size_t most) { return element("bdi", asText(text, most)); }

Html propertyList(const std::vector<Fact>& facts) {
  Html list;
  for (const auto& [name, value] : facts) {
    list += element("dt", asText(name)) + element("dd", bdi(value, kLongestText));
  }
  return element("dl", list);
}

Html folded(const Html& summary, const Html& content) {
  return element(R"(details class="more")", element("summary", summary) + content);
}

// Elements with their levels, a row each.

Html elementTitle(const Item& item) {
  Html title = asText(item.title, kLongestTitle);
  if (!item.name.empty() && item.name != item.title) {
    title += element(R"(span class="name")", bdi(item.name, kLongestTitle));
  }
  return title;
}

// The reason of what is partial is told in the machine's head.
Html levelRow(const Item& item) {
  const Html gap = item.filling == Filling::kFilled ? Html() : badge(item.filling);
  Html row = element(R"(th scope="row")", elementTitle(item) + gap);
  for (const std::string* const text : {&item.version, &item.build, &item.date}) {
    row += element("td", bdi(*text, kLongestTitle));
  }
  return element("tr", row);
}

Html missingRow(const Item& item) {
  const Html why =
      element(R"(td colspan="3")", badge(item.filling) + " "_html + asText(item.reason));
  return element(R"(tr class="missing")", element(R"(th scope="row")", elementTitle(item)) + why);
}

bool isThere(const Item& item) {
  return item.filling == Filling::kFilled || item.filling == Filling::kPartial;
}

Html elementProperties(const std::vector<Item>& items) {
  Html lists;
  for (const Item& item : items) {
    if (item.properties.empty()) continue;
    lists += element(R"(p class="of")", elementTitle(item)) + propertyList(item.properties);
  }
  return lists.isEmpty() ? lists : folded("All properties"_html, lists);
}

Html levelTable(const std::vector<Item>& items) {
  Html rows;
  for (const Item& item : items) {
    if (isThere(item)) rows += levelRow(item);
  }
  for (const Item& item : items) {
    if (!isThere(item)) rows += missingRow(item);
  }
  const Html head = R"(<thead><tr><th scope="col">Element</th><th scope="col">Version</th>)"
                    R"(<th scope="col">Build</th><th scope="col">Date</th></tr></thead>)"_html;
  return element(R"(table class="levels")", head + element("tbody", rows)) +
         elementProperties(items);
}

// Parts, a tile each.

Html partLine(const Fact& line) {
  const Html name =
      line.name.empty() ? Html() : element(R"(span class="what")", asText(line.name)) + " "_html;
  return element(R"(span class="line")", name + bdi(line.value, kLongestLine));
}

Html partFace(const Item& part) {
  Html face = element(R"(span class="title")", bdi(part.title, kLongestTitle));
  if (part.filling != Filling::kFilled) face += badge(part.filling);
  for (const Fact& line : part.lines) face += partLine(line);
  if (!part.reason.empty()) face += element(R"(span class="line")", asText(part.reason));
  return face;
}

// What there is to open can be opened.
Html partBody(const Item& part, const Html& face) {
  if (part.properties.empty()) return element(R"(div class="face")", face);
  return element("details",
                 element(R"(summary class="face")", face) + propertyList(part.properties));
}

Html partTile(const Item& part) {
  const Html body = partBody(part, partFace(part));
  switch (part.filling) {
    case Filling::kFilled:
      return element(R"(li class="part")", body);
    case Filling::kPartial:
    case Filling::kUntold:
      return element(R"(li class="part is-noted")", body);
    case Filling::kEmpty:
    case Filling::kAbsent:
    case Filling::kElsewhere:
    case Filling::kUnused:
      return element(R"(li class="part is-hollow")", body);
    default:
      return element(R"(li class="part is-troubled")", body);
  }
}

Html partTiles(const std::vector<Item>& parts) {
  Html tiles;
  for (const Item& part : parts) tiles += partTile(part);
  return element(R"(ul class="parts")", tiles);
}

// Boxes.

void count(const Box& box, Tally& tally) {
  for (const auto& [place, items] : box.items) {
    for (const Item& item : items) ++tally[item.filling];
  }
}

Html placeContent(Place place, const std::vector<Item>& items) {
  return isForLevels(place) ? levelTable(items) : partTiles(items);
}

std::string boxName(const Box& box) {
  return box.node ? "Node " + std::to_string(*box.node) : "The whole machine";
}

// A machine of one box has its places right below it.
Html boxContent(const Box& box, bool isOnly) {
  Html content;
  for (const auto& [place, items] : box.items) {
    const Html name = asText(placeName(place));
    const Html head = isOnly ? element("h3", name) : element("h4", name);
    content += element(R"(div class="place")", head + placeContent(place, items));
  }
  return element(R"(div class="places")", content);
}

Html boxSection(const Box& box, const Anchor& anchor, bool isOnly) {
  if (isOnly) return element(R"(div class="box")", boxContent(box, isOnly));
  Tally tally;
  count(box, tally);
  const Html head =
      element("h3", anchor, asText(boxName(box))) + element(R"(p class="tally")", tallyText(tally));
  return element(R"(section class="box")", head + boxContent(box, isOnly));
}

Html jumpList(const MachineView& machine, const Anchor& anchor) {
  Html links;
  for (std::size_t i = 0; i < machine.boxes.size(); ++i) {
    links += element("li", linkTo(anchor.part('b', i + 1), asText(boxName(machine.boxes[i]))));
  }
  return element(R"(ul class="jump")", links);
}

Html boxesOf(const MachineView& machine, const Anchor& anchor) {
  const bool isOnly = machine.boxes.size() <= 1;
  Html boxes = isOnly ? Html() : jumpList(machine, anchor);
  for (std::size_t i = 0; i < machine.boxes.size(); ++i) {
    boxes += boxSection(machine.boxes[i], anchor.part('b', i + 1), isOnly);
  }
  return boxes;
}

// Why something of what is there could not be told, each reason once.
Html partialNotes(const MachineView& machine) {
  std::map<std::string, std::string> titles;  // by reason
  for (const auto& [state, count] : machine.classes) {
    if (state.state != State::kPartial) continue;
    std::string& list = titles[state.reason];
    list += (list.empty() ? "" : "; ") + classTitle(state.className);
  }
  Html notes;
  for (const auto& [reason, list] : titles) {
    notes += element("li", badge(Filling::kPartial) + " "_html + asText(reason) + " "_html +
                               element(R"(span class="name")", asText(list)));
  }
  return notes.isEmpty() ? notes : element(R"(ul class="notes")", notes);
}

Html classRow(const ClassEnd& end, bool tellsStates) {
  const ClassState& state = end.state;
  return element("tr", element(R"(th scope="row")", asText(state.className)) +
                           element("td", badge(shownFilling(state.state, tellsStates))) +
                           element("td", asText(std::to_string(end.instances))) +
                           element("td", asText(state.collector)) +
                           element("td", asText(state.reason)));
}

Html classTable(const MachineView& machine) {
  Html rows;
  for (const ClassEnd& end : machine.classes) rows += classRow(end, machine.tellsStates);
  const Html head = R"(<thead><tr><th scope="col">Class</th><th scope="col">State</th>)"
                    R"(<th scope="col">Instances</th><th scope="col">Collector</th>)"
                    R"(<th scope="col">Reason</th></tr></thead>)"_html;
  const Html table = element(R"(table class="classes")", head + element("tbody", rows));
  return folded(
      "How each class ended"_html,
      element(R"(div class="wide" role="region" tabindex="0" aria-label="How each class ended")",
              table));
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

}  // namespace

Tally tallyOf(const MachineView& machine) {
  Tally tally;
  for (const Box& box : machine.boxes) count(box, tally);
  return tally;
}

Html machineFacts(const MachineView& machine) {
  std::string facts = machine.file + (machine.isLive ? ", live machine" : ", machine file");
  if (machine.nodes > 1) facts += ", " + counted(machine.nodes, "node", "nodes");
  if (!machine.product.empty()) facts += ", " + machine.product;
  return asText(facts);
}

Html machineSection(const MachineView& machine, const Anchor& anchor) {
  Html content = element("h2", anchor, bdi(machine.name, kLongestTitle)) +
                 element(R"(p class="facts")", machineFacts(machine)) +
                 element(R"(p class="tally")", tallyText(tallyOf(machine)));
  content += partialNotes(machine);
  if (!machine.facts.empty()) {
    content += folded("What the machine says of itself"_html, propertyList(machine.facts));
  }
  content += boxesOf(machine, anchor) + classTable(machine);
  return element(R"(section class="machine")", content);
}

}  // namespace velhost
