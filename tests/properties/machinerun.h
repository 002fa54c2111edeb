// SPDX-License-Identifier: Apache-2.0
//
// What velhost makes of the text of a machine file, in this process.
#pragma once

#include <string>
#include <vector>

#include "host/collectors/queryresult.h"

namespace velhost::properties {

struct Requests {
  std::vector<QueryResult> results;
  std::string document;  // as `query --format trace` prints it
};

// Requests of the default classes, one Init before the first. Throws what velhost complains of.
Requests queried(const std::string& machine, int requests = 1);

// As `record` writes it, with `redact` `record --redact`.
std::string recorded(const std::string& machine, bool redact = false);

}  // namespace velhost::properties
