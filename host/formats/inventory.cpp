// SPDX-License-Identifier: Apache-2.0
#include "host/formats/inventory.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "host/formats/classentries.h"
#include "host/text/cimjson.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;

Json collectorJson(const CollectorState& collector) {
  return {{"name", toUtf8(collector.name)},
          {"version", toUtf8(collector.version)},
          {"state", collector.hasAnswered ? "answered" : "failed"},
          {"reason", textOrNull(collector.reason)}};
}

Json classJson(const ClassEntry& entry) {
  Json instances = Json::array();
  for (const auto* const instance : entry.instances) {
    instances.push_back(plainValues(instance->properties));
  }
  return {{"class", entry.state->className},
          {"collector", textOrNull(entry.state->collector)},
          {"state", stateName(entry.state->state)},
          {"reason", textOrNull(entry.state->reason)},
          {"instances", std::move(instances)}};
}

}  // namespace

std::string inventoryText(const QueryContext& context, const QueryResult& result) {
  Json collectors = Json::array();
  for (const auto& collector : result.collectors) collectors.push_back(collectorJson(collector));
  Json classes = Json::array();
  for (const ClassEntry& entry : classEntries(result)) classes.push_back(classJson(entry));
  return documentText(
      {{"format", "vel-inventory/1"},
       {"machine", {{"source", context.machineSource}, {"name", toUtf8(context.machineName)}}},
       {"collectors", std::move(collectors)},
       {"classes", std::move(classes)}});
}

}  // namespace velhost
