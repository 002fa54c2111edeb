// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// Comma-separated values (RFC 4180, UTF-8): a record a property of an instance, below a record of
// names that is the same for every machine, class and schema; a requested class without instances
// has one record with its state. docs/formats.md tells the columns. What a spreadsheet would take
// for a formula gets an apostrophe in front, and so does what has one already. A text's line feeds
// stay; other characters that a terminal obeys or does not show are escaped. Throws
// std::logic_error as classEntries does.
std::string csvText(const QueryContext& context, const QueryResult& result);

}  // namespace velhost
