// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/seeninstance.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/formats/element.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::PublishedInstance;

// What stands in a line of origin where the place is told (docs/schema.md).
constexpr std::array<std::string_view, 6> kPlaceholders{"{label}", "{n}",         "{sp}",
                                                        "{node}",  "{structure}", "{SourceNode}"};

struct UnitNames {
  std::string_view part;
  std::string_view serial;
};

// The first that an instance has both of tells which unit it is.
constexpr UnitNames kUnitNames[] = {
    {"PartNumber", "SerialNumber"},
    {"ProductPartNumber", "ProductSerialNumber"},
    {"BoardPartNumber", "BoardSerialNumber"},
};

bool isOfPlace(const PropertySchema& property) {
  const auto hasPlace = [](std::string_view line) {
    return std::ranges::any_of(kPlaceholders, [line](std::string_view placeholder) {
      return line.find(placeholder) != std::string_view::npos;
    });
  };
  return property.isKey || std::ranges::any_of(property.mappingStrings, hasPlace);
}

const PropertySchema* propertyOf(const ClassSchema* cimClass, std::string_view name) {
  return cimClass == nullptr ? nullptr : NKRXVEL20::host::findProperty(*cimClass, name);
}

const TCIMValue* valueOf(const PublishedInstance& instance, std::string_view name) {
  const auto found =
      std::ranges::find_if(instance.properties, [name](const auto& p) { return p.first == name; });
  return found == instance.properties.end() ? nullptr : &found->second;
}

// No text can look like several.
void append(std::string& texts, std::string_view name, std::string_view value) {
  texts.append(name).append("=").append(std::to_string(value.size())).append(":").append(value);
}

// `shown` gives the text that a value counts as.
template <class Shown>
std::string keyText(const PublishedInstance& instance, const ClassSchema* cimClass, Shown shown) {
  std::string key;
  if (cimClass == nullptr) return key;
  for (const PropertySchema& property : cimClass->properties) {
    if (!property.isKey) continue;
    const TCIMValue* const value = valueOf(instance, property.name);
    append(key, value == nullptr ? "" : property.name, value == nullptr ? "" : shown(*value));
  }
  return key;
}

std::string keyOf(const PublishedInstance& instance, const ClassSchema* cimClass, Texts texts) {
  return keyText(instance, cimClass,
                 [texts](const TCIMValue& value) { return seenText(value, texts); });
}

PublishedInstance withoutNodeNumber(PublishedInstance instance) {
  std::erase_if(instance.properties, [](const auto& p) { return p.first == "SourceNode"; });
  return instance;
}

std::string unitOf(const PublishedInstance& instance, Texts texts) {
  for (const UnitNames& names : kUnitNames) {
    const TCIMValue* const part = valueOf(instance, names.part);
    const TCIMValue* const serial = valueOf(instance, names.serial);
    if (part == nullptr || serial == nullptr) continue;
    std::string unit;
    append(unit, names.part, seenText(*part, texts));
    append(unit, names.serial, seenText(*serial, texts));
    if (!isBlank(part->ToString()) && !isBlank(serial->ToString())) return unit;
  }
  return "";
}

}  // namespace

bool isBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

std::string seenText(const TCIMValue& value, Texts texts) {
  std::string text = value.ToString();
  return texts == Texts::kAsTheyAre ? text : toUtf8(text);
}

bool tellsPlace(const std::string& className, const std::string& property) {
  const PropertySchema* const found = propertyOf(NKRXVEL20::host::findClass(className), property);
  return found != nullptr && isOfPlace(*found);
}

SeenInstance seen(const PublishedInstance& instance, Texts texts) {
  const ClassSchema* const cimClass = NKRXVEL20::host::findClass(instance.className);
  SeenInstance result{&instance, instance.className, keyOf(instance, cimClass, texts),
                      instance.className, unitOf(instance, texts)};
  std::vector<std::pair<std::string_view, const TCIMValue*>> sorted;
  for (const auto& [name, value] : instance.properties) sorted.emplace_back(name, &value);
  std::ranges::sort(sorted, {}, [](const auto& property) { return property.first; });
  for (const auto& [name, value] : sorted) {
    const std::string text = seenText(*value, texts);
    append(result.all, name, text);
    const PropertySchema* const property = propertyOf(cimClass, name);
    if (property == nullptr || !isOfPlace(*property)) append(result.placed, name, text);
  }
  return result;
}

std::string keyOnNode(const PublishedInstance& instance, std::uint64_t node, Texts texts) {
  if (!nodeOf(instance)) return "";
  // The node's number is a key of its own, or stands before the name.
  const auto shown = [&](const TCIMValue& value) { return withoutNode(seenText(value, texts)); };
  const ClassSchema* const cimClass = NKRXVEL20::host::findClass(instance.className);
  return keyText(withoutNodeNumber(instance), cimClass, shown) + '@' + std::to_string(node);
}

}  // namespace velhost
