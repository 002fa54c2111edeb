// SPDX-License-Identifier: Apache-2.0
#include "host/text/cimjson.h"

#include "host/text/utf8.h"

namespace velhost {

nlohmann::ordered_json plainValue(const NKRXVEL20::TCIMValue& value) {
  using NKRXVEL20::ECIMType;
  switch (value.GetType()) {
    case ECIMType::kBoolean:
      return value == NKRXVEL20::TCIMValue(true);
    case ECIMType::kUint8:
    case ECIMType::kUint16:
    case ECIMType::kUint64:
      return value.ToUint64();
    case ECIMType::kString:
    case ECIMType::kDateTime:
      return toUtf8(value.ToString());
    case ECIMType::kEmpty:
      break;
  }
  return nullptr;
}

nlohmann::ordered_json plainValues(const NKRXVEL20::host::PropertyList& properties) {
  auto json = nlohmann::ordered_json::object();
  for (const auto& [name, value] : properties) json[name] = plainValue(value);
  return json;
}

nlohmann::ordered_json textOrNull(const std::string& text) {
  if (text.empty()) return nullptr;
  return toUtf8(text);
}

std::string documentText(const nlohmann::ordered_json& document) {
  return escapeUnseen(document.dump(2)) + '\n';
}

std::string lineText(const nlohmann::ordered_json& document) {
  return escapeUnseen(document.dump()) + '\n';
}

}  // namespace velhost
