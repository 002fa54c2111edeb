// SPDX-License-Identifier: Apache-2.0
#include "host/text/screen.h"

namespace velhost {
namespace {

// ECMA-48, SGR.
constexpr std::string_view kReset = "\x1B[0m";

std::string_view sequenceOf(Style style) {
  switch (style) {
    case Style::kBold:
      return "\x1B[1m";
    case Style::kRed:
      return "\x1B[31m";
    case Style::kYellow:
      return "\x1B[33m";
    case Style::kPlain:
      break;
  }
  return "";
}

}  // namespace

std::string styled(std::string_view text, Style style, const Screen& screen) {
  if (style == Style::kPlain || !screen.hasColour || text.empty()) return std::string(text);
  std::string result(sequenceOf(style));
  result += text;
  return result += kReset;
}

}  // namespace velhost
