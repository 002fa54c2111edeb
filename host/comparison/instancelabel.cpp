// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/instancelabel.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/formats/element.h"
#include "host/formats/shownvalue.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PublishedInstance;

constexpr std::size_t kLongestLabel = 120;

// The names tell these already (see nameOf and nodeOf).
constexpr std::array<std::string_view, 4> kNamed{"Name", "ElementName", "SourceNode",
                                                 "SoftwareElementID"};

std::string shownIn(const PublishedInstance& instance, std::string_view name) {
  const auto found =
      std::ranges::find_if(instance.properties, [name](const auto& p) { return p.first == name; });
  if (found == instance.properties.end()) return "";
  return shownValue(NKRXVEL20::host::findClass(instance.className), name, found->second);
}

void add(std::string& list, std::string_view name, const std::string& value) {
  if (value.empty()) return;
  list.append(list.empty() ? "" : ", ").append(name).append(" ").append(labelText(value));
}

bool isIn(const std::string& name, const std::string& value) {
  return name.find(value) != std::string::npos;
}

std::string unnamedKeys(const PublishedInstance& instance, const std::string& name) {
  const ClassSchema* const cimClass = NKRXVEL20::host::findClass(instance.className);
  std::string keys;
  if (cimClass == nullptr) return keys;
  for (const auto& property : cimClass->properties) {
    const bool isTold = std::ranges::find(kNamed, property.name) != kNamed.end();
    const std::string value = shownIn(instance, property.name);
    if (property.isKey && !isIn(name, value) && (!isTold || name.empty())) {
      add(keys, property.name, value);
    }
  }
  return keys;
}

std::string valuesOf(const PublishedInstance& instance) {
  constexpr std::size_t kMost = 3;
  std::string values;
  for (std::size_t i = 0; i < std::min(kMost, instance.properties.size()); ++i) {
    const std::string& name = instance.properties[i].first;
    add(values, labelText(name), shownIn(instance, name));
  }
  return values.empty() ? "without values" : values;
}

// "Node 1 : " is the name of some elements.
std::string trimmedName(const PublishedInstance& instance) {
  std::string name = visible(nameOf(instance));
  name.erase(name.find_last_not_of(" :") + 1);
  name.erase(0, std::min(name.find_first_not_of(' '), name.size()));
  return labelText(name);
}

}  // namespace

std::string labelText(std::string_view text) { return shortened(visible(text), kLongestLabel); }

std::string instanceLabel(const PublishedInstance& instance) {
  const std::string name = trimmedName(instance);
  const std::string keys = unnamedKeys(instance, name);
  if (name.empty()) return keys.empty() ? valuesOf(instance) : keys;
  return keys.empty() ? name : name + " (" + keys + ')';
}

std::string instanceDetail(const PublishedInstance& instance) {
  const std::string version = labelText(versionOf(instance));
  const std::string build = labelText(buildOf(instance));
  if (!version.empty()) return build.empty() ? version : version + " (build " + build + ')';
  if (!build.empty()) return "build " + build;
  std::string detail;
  add(detail, "part", shownIn(instance, "PartNumber"));
  add(detail, "serial", shownIn(instance, "SerialNumber"));
  return detail;
}

}  // namespace velhost
