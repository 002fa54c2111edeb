// SPDX-License-Identifier: Apache-2.0
#include "host/formats/tableformat.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/text/datetext.h"
#include "host/text/textlayout.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

using InstanceList = std::vector<const PublishedInstance*>;

std::string cellText(const TCIMValue& value) {
  const std::string text = value.ToString();
  return value.GetType() == ECIMType::kDateTime ? dateText(text) : visible(text);
}

bool hasText(const PropertyList& properties, const std::string& name) {
  return std::any_of(properties.begin(), properties.end(), [&](const auto& property) {
    return property.first == name &&
           property.second.ToString().find_first_not_of(' ') != std::string::npos;
  });
}

// The names of the properties that say something in one instance at least: Name, then the others
// in the order in which they turn up.
TextRow shownNames(const InstanceList& instances) {
  TextRow names{"Name"};
  for (const PublishedInstance* const instance : instances) {
    for (const auto& [name, value] : instance->properties) {
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
  }
  const auto saysNothing = [&](const std::string& name) {
    return std::none_of(instances.begin(), instances.end(), [&](const PublishedInstance* instance) {
      return hasText(instance->properties, name);
    });
  };
  names.erase(std::remove_if(names.begin(), names.end(), saysNothing), names.end());
  return names;
}

std::string cellNamed(const PropertyList& properties, const std::string& name) {
  const auto property = std::find_if(properties.begin(), properties.end(),
                                     [&](const auto& p) { return p.first == name; });
  return property == properties.end() ? "" : cellText(property->second);
}

// A line an instance, below a line of names.
std::vector<TextRow> instancesAsRows(const InstanceList& instances) {
  const TextRow names = shownNames(instances);
  std::vector<TextRow> rows{names};
  for (const PublishedInstance* const instance : instances) {
    TextRow& row = rows.emplace_back();
    for (const std::string& name : names) row.push_back(cellNamed(instance->properties, name));
  }
  return rows;
}

// A line a property: its name, then its value in each instance.
std::vector<TextRow> propertiesAsRows(const InstanceList& instances) {
  std::vector<TextRow> rows;
  for (const std::string& name : shownNames(instances)) {
    TextRow& row = rows.emplace_back(TextRow{name + ':'});
    for (const PublishedInstance* const instance : instances) {
      row.push_back(cellNamed(instance->properties, name));
    }
  }
  return rows;
}

// Instances one below the other, which fits whatever their number.
std::string asCards(const InstanceList& instances) {
  std::string text;
  for (const PublishedInstance* const instance : instances) {
    if (!text.empty()) text += '\n';
    text += alignedColumns(propertiesAsRows({instance}));
  }
  return text;
}

std::string instancesText(const InstanceList& instances) {
  if (shownNames(instances).empty()) return "";
  for (const auto& rows : {instancesAsRows(instances), propertiesAsRows(instances)}) {
    if (columnsWidth(rows) <= kLineWidth) return alignedColumns(rows);
  }
  return asCards(instances);
}

std::string classBlock(const ClassState& state, const InstanceList& instances) {
  const std::string count = std::to_string(instances.size());
  const std::string head =
      state.className + "  (" + count + (instances.size() == 1 ? " instance)\n" : " instances)\n");
  const std::string gap = state.reason.empty() ? "" : "  partial: " + state.reason + '\n';
  return head + instancesText(instances) + gap + '\n';
}

// The reason, or which class further up has the same one.
std::string reasonText(const ClassState& state, const std::vector<ClassState>& states) {
  const auto first = std::ranges::find(states, state.reason, &ClassState::reason);
  return &*first == &state ? state.reason : "as " + first->className;
}

// Of classes without instances, a line each. A reason is told once.
std::string statesText(const std::vector<ClassState>& states) {
  std::vector<TextRow> rows;
  rows.reserve(states.size());
  for (const ClassState& state : states) {
    rows.push_back(
        {state.className, std::string(stateName(state.state)), reasonText(state, states)});
  }
  return rows.empty() ? "" : "Without instances:\n" + alignedColumns(rows);
}

InstanceList instancesOf(const QueryResult& result, const std::string& name) {
  InstanceList instances;
  for (const PublishedInstance& instance : result.instances) {
    if (instance.className == name) instances.push_back(&instance);
  }
  return instances;
}

std::string headLine(const QueryContext& context) {
  return visible(context.plugin.name) + ' ' + visible(context.plugin.version) + " on " +
         visible(context.machineName) +
         (context.machineSource == "live" ? " (this machine)" : " (machine file)") + "\n\n";
}

}  // namespace

std::string tableText(const QueryContext& context, const QueryResult& result) {
  std::string text = headLine(context);
  std::vector<std::string> seen;
  std::vector<ClassState> empty;
  for (const ClassState& state : result.states) {
    if (std::ranges::find(seen, state.className) != seen.end()) continue;
    seen.push_back(state.className);
    const InstanceList instances = instancesOf(result, state.className);
    if (instances.empty()) {
      empty.push_back(state);
    } else {
      text += classBlock(state, instances);
    }
  }
  return empty.empty() ? text.erase(text.size() - 1) : text + statesText(empty);
}

}  // namespace velhost
