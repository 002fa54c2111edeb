// SPDX-License-Identifier: Apache-2.0
#include "host/formats/classentries.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

namespace velhost {
namespace {

const ClassState& stateOf(const QueryResult& result, const std::string& name) {
  const auto state = std::ranges::find(result.states, name, &ClassState::className);
  if (state == result.states.end()) throw std::logic_error("nothing tells the state of " + name);
  return *state;
}

}  // namespace

std::vector<ClassEntry> classEntries(const QueryResult& result) {
  std::vector<ClassEntry> entries;
  std::unordered_map<std::string, std::size_t> places;
  for (const std::string& name : result.requested) {
    if (places.emplace(name, entries.size()).second) {
      entries.push_back({&stateOf(result, name), {}});
    }
  }
  for (const auto& instance : result.instances) {
    const auto place = places.find(instance.className);
    if (place != places.end()) entries[place->second].instances.push_back(&instance);
  }
  return entries;
}

}  // namespace velhost
