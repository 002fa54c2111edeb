// SPDX-License-Identifier: Apache-2.0
#include "host/formats/shownvalue.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "host/text/datetext.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::Qualifier;

std::string_view withoutBlanksBehind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Empty: Values have none for it.
std::string_view nameOfValue(const PropertySchema& property, const std::string& value) {
  const auto found = std::ranges::find(property.valueMap, value);
  if (found == property.valueMap.end()) return {};
  return property.values[static_cast<std::size_t>(found - property.valueMap.begin())];
}

// A property has the qualifiers of its own text only: those that it inherits stand further up.
bool isHexadecimal(const ClassSchema* cimClass, std::string_view name) {
  for (; cimClass != nullptr; cimClass = cimClass->superclass) {
    const PropertySchema* const property = findProperty(*cimClass, name);
    if (property == nullptr) return false;
    const auto found = std::ranges::find_if(property->qualifiers, [](const Qualifier& qualifier) {
      return qualifier.declaration->name == "Hexadecimal";
    });
    if (found != property->qualifiers.end()) {
      return std::ranges::equal(found->values, std::to_array<std::string_view>({"TRUE"}));
    }
  }
  return false;
}

std::string hexadecimal(const TCIMValue& number) {
  std::string text = number.ToString(16);
  std::ranges::transform(text, text.begin(), [](unsigned char digit) {
    return static_cast<char>(std::toupper(digit));
  });
  return "0x" + text;
}

std::string plainText(const ClassSchema* cimClass, std::string_view property,
                      const TCIMValue& value) {
  switch (value.GetType()) {
    case ECIMType::kBoolean:
      return value == TCIMValue(true) ? "yes" : "no";
    case ECIMType::kUint8:
    case ECIMType::kUint16:
    case ECIMType::kUint64:
      return isHexadecimal(cimClass, property) ? hexadecimal(value) : value.ToString();
    case ECIMType::kDateTime:
      return dateText(value.ToString());
    case ECIMType::kString:
    case ECIMType::kEmpty:
      break;
  }
  return visible(withoutBlanksBehind(value.ToString()));
}

}  // namespace

std::string shownValue(const ClassSchema* cimClass, std::string_view property,
                       const TCIMValue& value) {
  const PropertySchema* const declared =
      cimClass == nullptr ? nullptr : findProperty(*cimClass, property);
  if (declared != nullptr) {
    const std::string_view name = nameOfValue(*declared, value.ToString());
    if (!name.empty()) return visible(name);
  }
  return plainText(cimClass, property, value);
}

}  // namespace velhost
