// SPDX-License-Identifier: Apache-2.0
#include "host/text/wrappedtext.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(WrappedText, KeepsToItsWidth) {
  const struct {
    const char* what;
    const char* text;
    const char* lines;
  } cases[] = {
      {"nothing", "", ""},
      {"exactly", "aaaa bbb", "  aaaa bbb\n"},
      {"one more", "aaaa bbbb", "  aaaa\n    bbbb\n"},
      {"a word that is longer", "a bbbbbbbbb c", "  a\n    bbbbbb\n    bbb c\n"},
      {"the same first", "bbbbbbbbb", "  bbbbbbbb\n    b\n"},
      {"a longer one of characters", "äääääääääö", "  ääääääää\n    äö\n"},
      {"characters, not bytes", "äää ööö", "  äää ööö\n"},
      {"pairs stay together", "abc 00 1F 2A d", "  abc\n    00 1F\n    2A d\n"},
      {"with the mark behind them", "abc 00 1F: d", "  abc\n    00 1F:\n    d\n"},
      {"no pairs", "abc be 1f 2", "  abc be\n    1f 2\n"},
      {"a sign is no digit", "abc -1 00 d", "  abc -1\n    00 d\n"},
      {"three digits are no pair", "abc 00 1F2 d", "  abc 00\n    1F2 d\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, wrappedText(c.text, 10, 2, 4)) << c.what;
}

TEST(WrappedText, WhereTheIndentTakesAllALineHasACharacter) {
  EXPECT_EQ("  a\n  b\n", wrappedText("ab", 2, 2, 2));
}

TEST(WrappedText, EightPairsStayTogetherAtMost) {
  EXPECT_EQ("a\n00 01 02 03 04 05 06 07\n08 09\n",
            wrappedText("a 00 01 02 03 04 05 06 07 08 09", 24, 0, 0));
}

TEST(WrappedText, StandsBehindALead) {
  const struct {
    const char* what;
    const char* lead;
    const char* text;
    const char* lines;
  } cases[] = {
      {"nothing", "", "", "\n"},
      {"a lead alone", "went  ", "", "went\n"},
      {"a line that is full", "", "123456789 123456789 ", "123456789 123456789\n"},
      {"at the last blank", "", "one two three four five", "one two three four\nfive\n"},
      {"behind the lead", "  a: ", "one two three four five",
       "  a: one two three\n     four five\n"},
      {"a word longer than a line", "", "a 123456789012345678901234567890 b",
       "a\n12345678901234567890\n1234567890 b\n"},
      {"characters of several bytes", "\xC3\xBC ",
       "\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC 456789 123456789",
       "\xC3\xBC \xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC 456789\n  123456789\n"},
      {"a lead that takes the line", "1234567890123456789 ", "one two",
       "1234567890123456789 one two\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, wrappedText(c.lead, c.text, 20)) << c.what;
}

}  // namespace
}  // namespace velhost
