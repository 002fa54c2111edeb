// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>

#include "host/collectors/queryresult.h"

namespace velhost {

// By node of after: which node it was before.
using NodeMap = std::map<std::uint64_t, std::uint64_t>;

// Nodes are numbered in the order in which their SPs answer, and that may be another one the next time.
// The serial numbers of what a node holds tell which it is: most of those that one node alone had
// before and one node alone has now. Empty where the nodes are what they were, or where that cannot
// be told of each of them.
NodeMap exchangedNodes(const QueryResult& before, const QueryResult& after);

}  // namespace velhost
