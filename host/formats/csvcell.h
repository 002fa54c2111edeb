// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace velhost {

// A cell of comma-separated values (RFC 4180, UTF-8), in quotes where it needs them. What a spreadsheet
// would take for a formula gets an apostrophe in front, and so does what has one already. Line feeds
// stay; other characters that a terminal obeys or does not show are escaped.
std::string csvCell(const std::string& text);

}  // namespace velhost
