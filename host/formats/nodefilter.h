// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// Leaves the node's instances alone in the result; those of no particular node go as well. A class
// that keeps none of its own is absent, with that as its reason; the other states stay.
void keepNode(std::uint64_t node, QueryResult& result);

// Empty where the result has instances of the node, otherwise one line that says which nodes it has.
std::string missingNode(std::uint64_t node, const QueryResult& result);

}  // namespace velhost
