// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/emptyclasses.h"

#include <algorithm>

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

bool hasInstances(const QueryResult& result, const std::string& name) {
  return std::ranges::find(result.instances, name, &PublishedInstance::className) !=
         result.instances.end();
}

}  // namespace

void leaveOutEmpty(const std::vector<std::string>& classes, EmptyClasses which,
                   QueryResult& result) {
  std::erase_if(result.states, [&](const ClassState& state) {
    const bool isToTell = which == EmptyClasses::kTroubledStay && isTrouble(state.state);
    return std::ranges::find(classes, state.className) != classes.end() && !isToTell &&
           !hasInstances(result, state.className);
  });
  result.requested.clear();
  for (const ClassState& state : result.states) result.requested.push_back(state.className);
}

}  // namespace velhost
