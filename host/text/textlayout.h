// SPDX-License-Identifier: Apache-2.0
//
// Columns of text for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

inline constexpr std::size_t kLineWidth = 100;

using TextRow = std::vector<std::string>;

// How wide the rows are when each column is as wide as its longest cell.
std::size_t columnsWidth(const std::vector<TextRow>& rows);

// The rows, one a line, their cells aligned; no blanks at the ends of lines.
std::string alignedColumns(const std::vector<TextRow>& rows);

// The words in lines of at most kLineWidth; lines behind the first start with `indent` blanks.
std::string wrappedList(std::string_view lead, const std::vector<std::string>& words,
                        std::size_t indent);

}  // namespace velhost
