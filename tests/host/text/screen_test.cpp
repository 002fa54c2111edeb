// SPDX-License-Identifier: Apache-2.0
#include "host/text/screen.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(Screen, HasStylesWhereItHasColour) {
  const struct {
    Style style;
    const char* coloured;
  } cases[] = {
      {Style::kPlain, "text"},
      {Style::kBold, "\x1B[1mtext\x1B[0m"},
      {Style::kRed, "\x1B[31mtext\x1B[0m"},
      {Style::kYellow, "\x1B[33mtext\x1B[0m"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.coloured, styled("text", c.style, {.hasColour = true}));
    EXPECT_EQ("text", styled("text", c.style, {}));
    EXPECT_EQ("", styled("", c.style, {.hasColour = true}));
  }
}

}  // namespace
}  // namespace velhost
