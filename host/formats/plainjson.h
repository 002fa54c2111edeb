// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// The published instances for jq: one key a requested class, in order, its instances with plain
// values.
std::string plainJson(const QueryResult& result);

}  // namespace velhost
