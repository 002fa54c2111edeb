// SPDX-License-Identifier: Apache-2.0
#include "host/text/hexdump.h"

#include <algorithm>

#include "host/text/hextext.h"

namespace velhost {
namespace {

constexpr std::size_t kLongRow = 16;
constexpr std::size_t kShortRow = 8;
constexpr std::size_t kGap = 2;

// A pair and a blank a byte, the bars and the text between them.
std::size_t rowWidth(std::size_t count) { return 3 * count - 1 + kGap + 2 + count; }

std::string asText(std::span<const unsigned char> bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
  }
  return text;
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

}  // namespace

std::string hexDump(std::span<const unsigned char> bytes, std::size_t firstPlace,
                    std::size_t indent, std::size_t width, std::size_t most) {
  const auto shown = bytes.first(std::min(bytes.size(), most));
  const std::size_t digits =
      std::to_string(firstPlace + std::max<std::size_t>(shown.size(), 1) - 1).size();
  const std::size_t head = indent + digits + kGap;
  const std::size_t longest = head + rowWidth(kLongRow) <= width ? kLongRow : kShortRow;
  const std::size_t row = std::min(longest, shown.size());
  std::string text;
  for (std::size_t at = 0; at < shown.size(); at += row) {
    const auto part = shown.subspan(at, std::min(row, shown.size() - at));
    const std::string place = std::to_string(firstPlace + at);
    text += std::string(indent + digits - place.size(), ' ') + place + "  ";
    text += padded(hexPairs(part), 3 * row - 1) + "  |" + asText(part) + "|\n";
  }
  const std::size_t more = bytes.size() - shown.size();
  if (more > 0) text += std::string(indent, ' ') + "and " + std::to_string(more) + " bytes more\n";
  return text;
}

}  // namespace velhost
