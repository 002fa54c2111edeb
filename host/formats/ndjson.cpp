// SPDX-License-Identifier: Apache-2.0
#include "host/formats/ndjson.h"

#include <nlohmann/json.hpp>

#include "host/formats/classentries.h"
#include "host/formats/element.h"
#include "host/text/cimjson.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;
using NKRXVEL20::host::PublishedInstance;

std::string instanceLine(const std::string& machine, const PublishedInstance& instance) {
  const auto node = nodeOf(instance);
  return lineText({{"machine", machine},
                   {"class", instance.className},
                   {"node", node ? Json(*node) : Json(nullptr)},
                   {"properties", plainValues(instance.properties)}});
}

std::string stateLine(const std::string& machine, const ClassState& state) {
  return lineText({{"machine", machine},
                   {"class", state.className},
                   {"state", stateName(state.state)},
                   {"reason", textOrNull(state.reason)}});
}

}  // namespace

std::string ndjsonText(const QueryContext& context, const QueryResult& result) {
  const std::string machine = toUtf8(context.machineName);
  std::string text;
  for (const ClassEntry& entry : classEntries(result)) {
    if (entry.instances.empty()) text += stateLine(machine, *entry.state);
    for (const auto* const instance : entry.instances) text += instanceLine(machine, *instance);
  }
  return text;
}

}  // namespace velhost
