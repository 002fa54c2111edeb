// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velhost {

// What a text for people is shown on.
struct Screen {
  std::size_t width = 80;  // columns, from 1
  bool hasColour = false;  // it obeys the control sequences of ECMA-48 for bold and colours
};

enum class Style { kPlain, kBold, kRed, kYellow };

// The text in that style, where the screen has one.
std::string styled(std::string_view text, Style style, const Screen& screen);

}  // namespace velhost
