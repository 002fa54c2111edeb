// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// A JSON text a line: one for each instance (machine, class, node, properties) and one for each
// requested class without instances (machine, class, state, reason), in the order of the request.
// Lines of many machines may be laid end to end. Throws std::logic_error as classEntries does.
std::string ndjsonText(const QueryContext& context, const QueryResult& result);

}  // namespace velhost
