// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/words.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(Words, NumbersOfTimes) {
  EXPECT_EQ("once", timesText(1));
  EXPECT_EQ("twice", timesText(2));
  EXPECT_EQ("3 times", timesText(3));
  EXPECT_EQ("0 times", timesText(0));
}

TEST(Words, Seconds) {
  const std::pair<int, const char*> cases[] = {
      {5000, "5 s"},    {200, "0.2 s"},    {1, "0.001 s"}, {1250, "1.25 s"},
      {1050, "1.05 s"}, {300000, "300 s"}, {0, "0 s"}};
  for (const auto& [time, text] : cases) {
    EXPECT_EQ(text, secondsText(std::chrono::milliseconds(time)));
  }
}

TEST(Words, OfManyTheFirstIsNamed) {
  EXPECT_EQ("", listText({}));
  EXPECT_EQ("a", listText({"a"}));
  EXPECT_EQ("a or b", listText({"a", "b"}));
  EXPECT_EQ("a or 2 others", listText({"a", "b", "c"}));
}

TEST(Words, OutsideTextIsShownAndBounded) {
  EXPECT_EQ(R"("a\n\x1b")", quoted("a\n\x1b"));
  EXPECT_EQ("a\\tb", reasonLine("a\tb"));
  EXPECT_EQ(std::string(240, 'x'), reasonLine(std::string(240, 'x')));
  EXPECT_EQ(240U, reasonLine(std::string(241, 'x')).size());
}

}  // namespace
}  // namespace velhost
