// SPDX-License-Identifier: Apache-2.0
#include "smbios/allnumeric.h"

#include <gtest/gtest.h>

namespace {

TEST(AllNumericTest, LooksAtDigitsAndPointsUpToTheEndOrTheLength) {
  const struct {
    const char* text;
    int length;
    bool isNumeric;
  } cases[] = {
      {"1.02", 4, true}, {"1.0a", 4, false}, {"1.0a", 3, true}, {"", 4, true},
      {"a", 0, true},    {"a", -1, true},    {"a", 1, false},   {"0123456789.", 99, true},
      {"1 2", 3, false}, {"-1", 2, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(isAllNumeric(c.text, c.length), c.isNumeric) << c.text << " of " << c.length;
  }
}

}  // namespace
