// SPDX-License-Identifier: Apache-2.0
//
// Lines and columns of text for people. Texts are as visible() gives them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/screen.h"

namespace velhost {

using TextRow = std::vector<std::string>;

// How wide the rows are when each column is as wide as its widest cell.
std::size_t columnsWidth(const std::vector<TextRow>& rows);

// The rows, one a line, their cells aligned; no blanks at the ends of lines.
std::string alignedColumns(const std::vector<TextRow>& rows);

// The text in lines that stay inside the width, behind so many blanks as far as there is room.
std::string paragraph(std::string_view text, std::size_t indent, std::size_t width);

// A list with commas behind a lead ("  all:  "), in lines that stay inside the width and are broken
// between its items as far as there is room.
std::string listLines(std::string_view lead, const std::vector<std::string>& items,
                      std::size_t width);

// A paragraph of a name, in bold, and what stands behind it.
std::string heading(std::string_view name, std::string_view rest, const Screen& screen);

struct StyledText {
  std::string text;
  Style style = Style::kPlain;
};

// What there is to say of something, behind what it is.
struct Remark {
  std::vector<StyledText> what;
  std::string text;
};

// The remarks, one below the other, inside the screen's width: in columns, the text wrapped in the
// last one; where there is no room for that, the text in the lines below.
std::string remarks(const std::vector<Remark>& list, const Screen& screen);

}  // namespace velhost
