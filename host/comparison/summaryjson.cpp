// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>
#include <utility>

#include "host/comparison/summarytext.h"
#include "host/text/cimjson.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;

Json holdersJson(const Holders& holders) {
  Json named = Json::array();
  for (const Holder& holder : holders.named) {
    named.push_back(
        {{"machine", holder.machine}, {"file", toUtf8(holder.file)}, {"nodes", holder.nodes}});
  }
  return named;
}

Json levelJson(const Level& level) {
  return {{"version", textOrNull(level.version)},
          {"build", textOrNull(level.build)},
          {"odd", level.isOdd},
          {"machines", level.holders.machines},
          {"instances", level.holders.instances},
          {"named", holdersJson(level.holders)}};
}

Json elementJson(const ElementLevels& element) {
  Json levels = Json::array();
  for (const Level& level : element.levels) levels.push_back(levelJson(level));
  return {{"model", textOrNull(element.model)},
          {"class", element.className},
          {"name", textOrNull(element.name)},
          {"levels", std::move(levels)}};
}

Json untoldJson(const UntoldLevels& untold) {
  return {{"model", textOrNull(untold.model)},
          {"class", untold.className},
          {"state", stateName(untold.state)},
          {"machines", untold.holders.machines},
          {"named", holdersJson(untold.holders)}};
}

}  // namespace

std::string summaryJson(const LevelSummary& summary, std::size_t unread) {
  Json elements = Json::array();
  for (const ElementLevels& element : summary.elements) elements.push_back(elementJson(element));
  Json untold = Json::array();
  for (const UntoldLevels& one : summary.untold) untold.push_back(untoldJson(one));
  return documentText({{"format", "vel-summary/1"},
                       {"machines", summary.machines},
                       {"unread_files", unread},
                       {"elements", std::move(elements)},
                       {"untold", std::move(untold)}});
}

}  // namespace velhost
