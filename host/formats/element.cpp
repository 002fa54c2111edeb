// SPDX-License-Identifier: Apache-2.0
#include "host/formats/element.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::findProperty;
using NKRXVEL20::host::PublishedInstance;

constexpr std::string_view kNodeProperty = "SourceNode";
constexpr std::array<std::string_view, 2> kNames{"Name", "ElementName"};
constexpr std::array<std::string_view, 2> kVersions{"Version", "FirmwareVersion"};

const TCIMValue* valueOf(const PublishedInstance& instance, std::string_view name) {
  const auto& properties = instance.properties;
  const auto found =
      std::ranges::find_if(properties, [name](const auto& p) { return p.first == name; });
  return found == properties.end() ? nullptr : &found->second;
}

// Without the blanks that pad it.
std::string textOf(const PublishedInstance& instance, std::string_view name) {
  const TCIMValue* const value = valueOf(instance, name);
  std::string text = value == nullptr ? "" : value->ToString();
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

template <class Names>
std::string firstText(const PublishedInstance& instance, const Names& names) {
  for (const std::string_view name : names) {
    if (std::string text = textOf(instance, name); !text.empty()) return text;
  }
  return "";
}

template <class Names>
bool hasAny(const ClassSchema& cimClass, const Names& names) {
  return std::ranges::any_of(
      names, [&](std::string_view name) { return findProperty(cimClass, name) != nullptr; });
}

bool isNumber(const TCIMValue& value) {
  const ECIMType type = value.GetType();
  return type == ECIMType::kUint8 || type == ECIMType::kUint16 || type == ECIMType::kUint64;
}

bool isLabelled(const ClassSchema& cimClass) {
  const auto* const name = findProperty(cimClass, "Name");
  return name != nullptr && std::ranges::any_of(name->mappingStrings, [](std::string_view line) {
           return line.starts_with("Derived.VEL|{label}");
         });
}

// Of "Node 2: DIMM 1" the 2.
std::optional<std::uint64_t> labelledNode(std::string_view name) {
  constexpr std::string_view kLabel = "Node ";
  if (!name.starts_with(kLabel)) return std::nullopt;
  name.remove_prefix(kLabel.size());
  std::uint8_t node = 0;
  const auto [rest, error] = std::from_chars(name.data(), name.data() + name.size(), node);
  if (error != std::errc()) return std::nullopt;
  name.remove_prefix(static_cast<std::size_t>(rest - name.data()));
  return name.starts_with(": ") ? std::optional<std::uint64_t>(node) : std::nullopt;
}

std::string keysText(const PublishedInstance& instance, const ClassSchema& cimClass) {
  std::string text;
  for (const auto& property : cimClass.properties) {
    if (!property.isKey || property.name == kNodeProperty) continue;
    const std::string key = textOf(instance, property.name);
    if (!key.empty()) text += (text.empty() ? "" : ", ") + key;
  }
  return text;
}

}  // namespace

std::optional<std::uint64_t> nodeOf(const PublishedInstance& instance) {
  const TCIMValue* const node = valueOf(instance, kNodeProperty);
  if (node != nullptr && isNumber(*node)) return node->ToUint64();
  const ClassSchema* const cimClass = findClass(instance.className);
  if (cimClass == nullptr || !isLabelled(*cimClass)) return std::nullopt;
  return labelledNode(textOf(instance, "Name"));
}

std::string nameOf(const PublishedInstance& instance) {
  const ClassSchema* const cimClass = findClass(instance.className);
  if (cimClass == nullptr || hasAny(*cimClass, kNames)) return firstText(instance, kNames);
  return keysText(instance, *cimClass);
}

std::string withoutNode(const std::string& name) {
  std::string_view rest = name;
  constexpr std::string_view kNode = "Node ";
  if (!rest.starts_with(kNode)) return name;
  rest.remove_prefix(kNode.size());
  const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
  if (digits == 0) return name;
  rest.remove_prefix(digits);
  if (rest.starts_with(' ')) rest.remove_prefix(1);
  if (!rest.starts_with(':')) return name;
  rest.remove_prefix(1);
  if (rest.starts_with(' ')) rest.remove_prefix(1);
  return std::string(rest);
}

std::string versionOf(const PublishedInstance& instance) { return firstText(instance, kVersions); }

std::string buildOf(const PublishedInstance& instance) { return textOf(instance, "BuildNumber"); }

bool hasLevel(const std::string& className) {
  const ClassSchema* const cimClass = findClass(className);
  return cimClass != nullptr && hasAny(*cimClass, kVersions);
}

}  // namespace velhost
