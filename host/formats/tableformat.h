// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// The published instances for people: a block a class, with a line an instance where that fits,
// otherwise a line a property; at the end the classes that have no instances, with their states and
// the reasons. Properties that are blank in all of a block's instances are left out.
std::string tableText(const QueryContext& context, const QueryResult& result);

}  // namespace velhost
