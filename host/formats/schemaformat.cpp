// SPDX-License-Identifier: Apache-2.0
#include "host/formats/schemaformat.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "host/text/cimjson.h"
#include "host/text/textlayout.h"

namespace velhost {

std::string schemaTable(const ClassList& classes, const Screen& screen) {
  std::string text;
  for (const auto* const cimClass : classes) {
    std::vector<Remark> properties;
    for (const auto& property : cimClass->properties) {
      properties.push_back(
          {{{std::string(property.name)}}, std::string(NKRXVEL20::host::typeName(property.type))});
    }
    if (!text.empty()) text += '\n';
    text += heading(cimClass->name, "  " + std::string(cimClass->description), screen);
    text += remarks(properties, screen);
  }
  return text;
}

std::string schemaJson(const ClassList& classes) {
  auto document = nlohmann::ordered_json::array();
  for (const auto* const cimClass : classes) {
    auto properties = nlohmann::ordered_json::array();
    for (const auto& property : cimClass->properties) {
      properties.push_back(
          {{"name", property.name}, {"type", NKRXVEL20::host::typeName(property.type)}});
    }
    document.push_back({{"name", cimClass->name},
                        {"description", cimClass->description},
                        {"properties", std::move(properties)}});
  }
  return documentText(document);
}

}  // namespace velhost
