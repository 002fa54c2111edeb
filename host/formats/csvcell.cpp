// SPDX-License-Identifier: Apache-2.0
#include "host/formats/csvcell.h"

#include <algorithm>
#include <string_view>

#include "host/text/utf8.h"

namespace velhost {
namespace {

// Line feeds stay line feeds: a quoted cell may have them, and spreadsheets show them as they are.
std::string seenLines(std::string_view text) {
  std::string seen;
  for (;;) {
    const std::size_t end = text.find('\n');
    seen += visible(text.substr(0, end));
    if (end == std::string_view::npos) return seen;
    seen += '\n';
    text.remove_prefix(end + 1);
  }
}

// Blanks in front do not keep every spreadsheet from it. East Asian ones take the wide forms of the
// signs too (U+FF0B, U+FF0D, U+FF1D, U+FF20).
bool looksLikeFormula(std::string_view text) {
  constexpr std::string_view kSigns[] = {
      "=", "+", "-", "@", "'", "\xEF\xBC\x8B", "\xEF\xBC\x8D", "\xEF\xBC\x9D", "\xEF\xBC\xA0"};
  text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
  return std::ranges::any_of(kSigns, [&](std::string_view sign) { return text.starts_with(sign); });
}

std::string inQuotes(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"') result += '"';
    result += c;
  }
  return result += '"';
}

}  // namespace

std::string csvCell(const std::string& text) {
  std::string cell = seenLines(toUtf8(text));
  if (looksLikeFormula(cell)) cell.insert(0, 1, '\'');
  return cell.find_first_of("\",\n") == std::string::npos ? cell : inQuotes(cell);
}

}  // namespace velhost
