// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"
#include "host/text/screen.h"

namespace velhost {

struct TableOptions {
  Screen screen = {};
  bool hasAllProperties = false;  // otherwise those that say most, as far as a line has room
};

// The published instances for people: a block a class, a line an instance, those of a node together;
// at the end the classes that have no instances, with their states and the reasons. No line is wider
// than the screen. Properties that are blank in all of a block's instances are left out.
std::string tableText(const QueryContext& context, const QueryResult& result,
                      const TableOptions& options);

}  // namespace velhost
