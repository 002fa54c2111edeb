// SPDX-License-Identifier: Apache-2.0
#include "host/report/changes.h"

#include <string>

#include "host/comparison/comparison.h"
#include "host/formats/element.h"
#include "host/formats/shownvalue.h"
#include "host/report/badge.h"
#include "host/report/partkind.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::PublishedInstance;

constexpr std::size_t kLongestName = 120;
constexpr std::size_t kLongestValue = 400;

// One row: what it is about, how it was, how it is.
Html row(const Html& what, const Html& before, const Html& after) {
  return element("tr", element(R"(th scope="row")", what) + element("td", before) +
                           element("td", after)) +
         "\n"_html;
}

Html nameText(const PublishedInstance& instance) {
  const auto node = nodeOf(instance);
  std::string name = withoutNode(nameOf(instance));
  if (name.empty()) name = classTitle(instance.className);
  if (node) name.insert(0, "Node " + std::to_string(*node) + ": ");
  return element("bdi", asText(name, kLongestName));
}

// What tells one unit from another, in a line.
Html unitText(const PublishedInstance& instance) {
  std::string text;
  for (const auto& [name, value] : instance.properties) {
    if (name != "PartNumber" && name != "SerialNumber" && name != "Version" &&
        name != "BuildNumber") {
      continue;
    }
    const std::string shown = shownValue(findClass(instance.className), name, value);
    if (shown.empty()) continue;
    if (!text.empty()) text += ", ";
    text.append(name).append(" ").append(shown);
  }
  return element("bdi", asText(text.empty() ? "there" : text, kLongestValue));
}

Html valueText(const PublishedInstance& instance, const std::string& property,
               const TCIMValue* value) {
  const auto* const cimClass = findClass(instance.className);
  const std::string shown = value == nullptr ? "" : shownValue(cimClass, property, *value);
  if (shown.empty()) return element(R"(span class="what")", "blank"_html);
  return element("bdi", asText(shown, kLongestValue));
}

Html propertyRows(const InstanceChange& change) {
  Html rows;
  for (const PropertyChange& property : change.properties) {
    const Html what =
        nameText(*change.after) + " "_html + element(R"(span class="name")", asText(property.name));
    rows += row(what, valueText(*change.before, property.name, property.before),
                valueText(*change.after, property.name, property.after));
  }
  return rows;
}

Html gone() { return element(R"(span class="change")", "\u2212 gone"_html); }
Html newHere() { return element(R"(span class="change")", "+ new"_html); }

// An entity of a class that one of the files does not have.
Html stateText(const ClassState* state, bool tellsStates) {
  if (state == nullptr) return element(R"(span class="what")", "not asked for"_html);
  return badge(shownFilling(state->state, tellsStates)) + " "_html + asText(state->reason);
}

Html stateRow(const ClassComparison& entry, const Findings& before, const Findings& after) {
  if (!entry.hasOtherState && entry.isCompared) return {};
  const Html what = entry.isCompared ? "state"_html : "state; instances are not compared"_html;
  return row(what, stateText(entry.before, before.tellsStates),
             stateText(entry.after, after.tellsStates));
}

Html movedRow(const InstanceChange& change) {
  const Html what =
      unitText(*change.after) + element(R"(span class="name change")", "\u2192 moved"_html);
  return row(what, nameText(*change.before), nameText(*change.after)) + propertyRows(change);
}

Html classRows(const ClassComparison& entry, const Findings& before, const Findings& after) {
  Html rows = stateRow(entry, before, after);
  for (const InstanceChange& change : entry.changed) rows += propertyRows(change);
  for (const InstanceChange& change : entry.moved) rows += movedRow(change);
  for (const PublishedInstance* const instance : entry.went) {
    rows += row(nameText(*instance), unitText(*instance), gone());
  }
  for (const PublishedInstance* const instance : entry.came) {
    rows += row(nameText(*instance), newHere(), unitText(*instance));
  }
  return rows;
}

Html classBody(const ClassComparison& entry, const Findings& before, const Findings& after) {
  Html rows = classRows(entry, before, after);
  if (rows.isEmpty()) return rows;
  const Html head =
      element(R"(th scope="rowgroup" colspan="3")", asText(classTitle(entry.className)));
  return element("tbody", element(R"(tr class="group")", head) + rows);
}

Html columnHead(const Html& when, const ToldMachine& machine) {
  const std::string& name = machine.findings.context.machineName;
  return element(R"(th scope="col")",
                 when + element("bdi", asText(name, kLongestName)) +
                     element(R"(span class="name")", asText(machine.file, kLongestName)));
}

Html changeTable(const ToldMachine& before, const ToldMachine& after) {
  Html bodies;
  const Comparison comparison = compared(before.findings, after.findings);
  for (const ClassComparison& entry : comparison.classes) {
    bodies += classBody(entry, before.findings, after.findings);
  }
  if (bodies.isEmpty()) return "<p>Nothing is different.</p>"_html;
  const Html head = element("thead", element("tr", R"(<th scope="col">What</th>)"_html +
                                                       columnHead("Before: "_html, before) +
                                                       columnHead("After: "_html, after)));
  return element(R"(table class="changes")", head + bodies);
}

}  // namespace

Html changesSection(const ToldMachine& before, const ToldMachine& after) {
  return element(R"(section aria-labelledby="changes")",
                 R"(<h2 id="changes">What changed</h2>)"_html + changeTable(before, after)) +
         "\n"_html;
}

}  // namespace velhost
