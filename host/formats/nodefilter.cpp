// SPDX-License-Identifier: Apache-2.0
#include "host/formats/nodefilter.h"

#include <algorithm>
#include <set>

#include "host/formats/element.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

std::set<std::string> classesIn(const QueryResult& result) {
  std::set<std::string> classes;
  for (const PublishedInstance& instance : result.instances) classes.insert(instance.className);
  return classes;
}

// "1 to 3, 5"
std::string rangesText(const std::set<std::uint64_t>& numbers) {
  std::string text;
  for (auto number = numbers.begin(); number != numbers.end();) {
    const std::uint64_t first = *number;
    std::uint64_t last = first;
    while (++number != numbers.end() && *number == last + 1) last = *number;
    text += (text.empty() ? "" : ", ") + std::to_string(first);
    if (last > first) text += " to " + std::to_string(last);
  }
  return text;
}

}  // namespace

void keepNode(std::uint64_t node, QueryResult& result) {
  std::set<std::string> emptied = classesIn(result);
  std::erase_if(result.instances, [node](const PublishedInstance& i) { return nodeOf(i) != node; });
  for (const std::string& name : classesIn(result)) emptied.erase(name);
  for (ClassState& state : result.states) {
    if (!emptied.contains(state.className)) continue;
    state.state = State::kAbsent;
    state.reason = "node " + std::to_string(node) + " has none" +
                   (state.reason.empty() ? "" : "; " + state.reason);
  }
}

std::string missingNode(std::uint64_t node, const QueryResult& result) {
  std::set<std::uint64_t> nodes;
  for (const PublishedInstance& instance : result.instances) {
    if (const auto number = nodeOf(instance)) nodes.insert(*number);
  }
  if (nodes.contains(node)) return "";
  return "the answer has no node " + std::to_string(node) +
         (nodes.empty() ? ", nor any other" : ", only " + rangesText(nodes));
}

}  // namespace velhost
