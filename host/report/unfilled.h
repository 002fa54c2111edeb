// SPDX-License-Identifier: Apache-2.0
//
// Places for components where none was found. Collectors publish what is there; which places there
// are is told by the commands that were sent for them, or by the numbers of those that are there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/collectors/queryresult.h"

namespace velhost {

struct Unfilled {
  enum class Why {
    kEmpty,       // the SP answered and told of nothing
    kUnanswered,  // the SP did not answer for it
    kUntold,      // one or the other: many an SP does not answer for an empty slot
  };
  std::string className;
  std::optional<std::uint64_t> node;
  std::string title;  // as the instance would be named, without its node: "DIMM 5"
  Why why = Why::kUntold;
  std::string reason;  // empty: there is nothing more to say
};

// From the traffic where it was kept: the schema tells which dot command reads which component.
// Otherwise the numbers that are left out. A place behind the last one that is filled cannot be told
// then, and numbers that run on over the nodes are taken to be as many on each.
std::vector<Unfilled> unfilledPlaces(const QueryResult& result);

// The nodes that were asked, as the traffic tells.
std::vector<std::uint64_t> askedNodes(const QueryResult& result);

// "DIMM" and 5 of "DIMM 5"; a title without a number has 0.
struct NumberedTitle {
  std::string word;
  std::uint64_t number = 0;
};
NumberedTitle numberedTitle(const std::string& title);

}  // namespace velhost
