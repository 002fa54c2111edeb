// SPDX-License-Identifier: Apache-2.0
#include "host/formats/plainjson.h"

#include <nlohmann/json.hpp>

#include "host/text/cimjson.h"

namespace velhost {

std::string plainJson(const QueryResult& result) {
  using Json = nlohmann::ordered_json;
  Json document = Json::object();
  for (const std::string& name : result.requested) document[name] = Json::array();
  for (const auto& instance : result.instances) {
    const auto list = document.find(instance.className);
    if (list != document.end()) list->push_back(plainValues(instance.properties));
  }
  return documentText(document);
}

}  // namespace velhost
