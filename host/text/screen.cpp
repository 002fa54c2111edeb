// SPDX-License-Identifier: Apache-2.0
#include "host/text/screen.h"

namespace velhost {
namespace {

// ECMA-48, SGR; in the order of the styles.
constexpr std::string_view kSequences[] = {"", "\x1B[1m", "\x1B[31m", "\x1B[33m"};
constexpr std::string_view kReset = "\x1B[0m";

}  // namespace

std::string styled(std::string_view text, Style style, const Screen& screen) {
  if (style == Style::kPlain || !screen.hasColour || text.empty()) return std::string(text);
  std::string result(kSequences[static_cast<std::size_t>(style)]);
  result += text;
  return result += kReset;
}

}  // namespace velhost
