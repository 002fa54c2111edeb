// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/diffjson.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "host/comparison/instancelabel.h"
#include "host/comparison/seeninstance.h"
#include "host/text/cimjson.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

Json sideJson(const ComparedFile& file) {
  const QueryContext& context = file.findings.context;
  return {{"file", toUtf8(file.name)},
          {"machine", {{"source", context.machineSource}, {"name", toUtf8(context.machineName)}}}};
}

Json stateJson(const ClassState* state, std::size_t count) {
  if (state == nullptr) return nullptr;
  return {{"state", stateName(state->state)},
          {"reason", textOrNull(state->reason)},
          {"instances", count}};
}

Json valueJson(const TCIMValue* value) {
  return value == nullptr ? Json(nullptr) : plainValue(*value);
}

Json changesJson(const InstanceChange& change) {
  Json properties = Json::object();
  for (const PropertyChange& property : change.properties) {
    properties[toUtf8(property.name)] = {{"old", valueJson(property.before)},
                                         {"new", valueJson(property.after)}};
  }
  return properties;
}

// The properties that tell which one of its class it is.
Json keysJson(const PublishedInstance& instance) {
  PropertyList keys;
  const auto* const cimClass = NKRXVEL20::host::findClass(instance.className);
  for (const auto& property : instance.properties) {
    const auto* const declared =
        cimClass == nullptr ? nullptr : findProperty(*cimClass, property.first);
    if (declared != nullptr && declared->isKey) keys.push_back(property);
  }
  return plainValues(keys);
}

Json changeJson(const InstanceChange& change) {
  return {{"name", instanceLabel(*change.after)},
          {"keys", keysJson(*change.after)},
          {"properties", changesJson(change)}};
}

Json moveJson(const InstanceChange& move) {
  const auto place = [](const PublishedInstance& instance) {
    return Json{{"name", instanceLabel(instance)}, {"keys", keysJson(instance)}};
  };
  return {
      {"old", place(*move.before)}, {"new", place(*move.after)}, {"properties", changesJson(move)}};
}

Json instanceJson(const PublishedInstance* instance) {
  return {{"name", instanceLabel(*instance)}, {"properties", plainValues(instance->properties)}};
}

template <class Element, class ToJson>
Json list(const std::vector<Element>& elements, ToJson toJson) {
  Json json = Json::array();
  for (const Element& element : elements) json.push_back(toJson(element));
  return json;
}

Json classJson(const ClassComparison& compared) {
  return {{"class", toUtf8(compared.className)},
          {"old", stateJson(compared.before, compared.countBefore)},
          {"new", stateJson(compared.after, compared.countAfter)},
          {"different", compared.isDifferent()},
          {"compared", compared.isCompared},
          {"changed", list(compared.changed, changeJson)},
          {"moved", list(compared.moved, moveJson)},
          {"went", list(compared.went, instanceJson)},
          {"came", list(compared.came, instanceJson)}};
}

}  // namespace

std::string differenceJson(const ComparedFile& before, const ComparedFile& after,
                           const Comparison& comparison) {
  Json classes = Json::array();
  for (const ClassComparison& compared : comparison.classes) {
    if (compared.isDifferent() || !compared.isCompared) classes.push_back(classJson(compared));
  }
  return documentText({{"format", "vel-diff/1"},
                       {"old", sideJson(before)},
                       {"new", sideJson(after)},
                       {"different", comparison.isDifferent()},
                       {"classes", std::move(classes)}});
}

}  // namespace velhost
