// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/exchangednodes.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include "host/comparison/seeninstance.h"
#include "host/formats/element.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;
using Serial = std::tuple<std::string, std::string, std::string>;  // class, property, text
using NodesBySerial = std::map<Serial, std::set<std::uint64_t>>;
using Votes = std::map<std::uint64_t, std::map<std::uint64_t, std::size_t>>;  // after, before

void addSerials(const PublishedInstance& instance, std::uint64_t node, NodesBySerial& serials) {
  for (const auto& [name, value] : instance.properties) {
    if (!std::string_view(name).ends_with("SerialNumber")) continue;
    const std::string text = value.ToString();
    if (!isBlank(text)) serials[{instance.className, name, text}].insert(node);
  }
}

NodesBySerial serialsOf(const QueryResult& result) {
  NodesBySerial serials;
  for (const PublishedInstance& instance : result.instances) {
    if (const auto node = nodeOf(instance)) addSerials(instance, *node, serials);
  }
  return serials;
}

Votes votesOf(const NodesBySerial& before, const NodesBySerial& after) {
  Votes votes;
  for (const auto& [serial, nodes] : after) {
    const auto found = before.find(serial);
    const bool isKnown = found != before.end() && found->second.size() == 1 && nodes.size() == 1;
    if (isKnown) ++votes[*nodes.begin()][*found->second.begin()];
  }
  return votes;
}

// Each node is one of the others, and not all are what they were.
bool isExchange(const NodeMap& nodes) {
  std::set<std::uint64_t> from;
  for (const auto& [after, before] : nodes) {
    if (!nodes.contains(before) || !from.insert(before).second) return false;
  }
  return std::ranges::any_of(nodes, [](const auto& pair) { return pair.first != pair.second; });
}

}  // namespace

NodeMap exchangedNodes(const QueryResult& before, const QueryResult& after) {
  NodeMap nodes;
  for (const auto& [node, votes] : votesOf(serialsOf(before), serialsOf(after))) {
    const auto best =
        std::ranges::max_element(votes, {}, [](const auto& vote) { return vote.second; });
    nodes[node] = best->first;
  }
  return isExchange(nodes) ? nodes : NodeMap();
}

}  // namespace velhost
