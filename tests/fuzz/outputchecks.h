// SPDX-License-Identifier: Apache-2.0
//
// What every output has to be, whatever the data: each ends the process where a text is not so. They share
// no code with what writes the outputs.
#pragma once

#include <cstddef>
#include <string_view>

namespace fuzz {

// UTF-8 without characters that a terminal obeys or does not show, but for those ASCII controls.
bool isClean(std::string_view text, std::string_view controls = "\n");

void requireClean(std::string_view what, std::string_view text);

// Clean, and no line of ASCII is wider.
void requireTable(std::string_view what, std::string_view text, std::size_t width);

// One JSON text (RFC 8259), clean and ended by a line feed.
void requireJson(std::string_view what, std::string_view text);

// One JSON text a line.
void requireNdjson(std::string_view text);

// Records of as many cells as the first has (RFC 4180), of which none is a spreadsheet's formula.
void requireCsv(std::string_view text);

// Comments, and samples NAME{LABEL="VALUE",...} NUMBER, each label once; the end is marked.
void requireOpenMetrics(std::string_view text);

// Each tag is one that the page has and is closed where its parent's content ends, each attribute stands
// in quotes, and an ampersand begins an entity.
void requireHtml(std::string_view text);

}  // namespace fuzz
