// SPDX-License-Identifier: Apache-2.0
#include "host/formats/plainjson.h"

#include <nlohmann/json.hpp>

#include "host/text/cimjson.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;

Json propertiesJson(const NKRXVEL20::host::PropertyList& properties) {
  Json json = Json::object();
  for (const auto& [name, value] : properties) json[name] = plainValue(value);
  return json;
}

}  // namespace

std::string plainJson(const QueryResult& result) {
  Json document = Json::object();
  for (const std::string& name : result.requested) document[name] = Json::array();
  for (const auto& instance : result.instances) {
    const auto list = document.find(instance.className);
    if (list != document.end()) list->push_back(propertiesJson(instance.properties));
  }
  return documentText(document);
}

}  // namespace velhost
