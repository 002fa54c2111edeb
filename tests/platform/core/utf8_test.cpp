// SPDX-License-Identifier: Apache-2.0
#include "vel/utf8.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace NKRXVEL20 {
namespace {

// The edges of each row of Unicode's table 3-7: 0 where the bytes are not well-formed.
TEST(Utf8, SequencesAreThoseOfUnicodesTable) {
  const struct {
    std::string bytes;
    std::size_t length;
  } cases[] = {
      {"", 0},
      {"\0"s, 1},
      {"\x7F", 1},
      {"\x80", 0},
      {"\xC1\xBF", 0},
      {"\xC2\x7F", 0},
      {"\xC2\x80", 2},
      {"\xDF\xBF", 2},
      {"\xDF\xC0", 0},
      {"\xDF", 0},
      {"\xE0\x9F\xBF", 0},
      {"\xE0\xA0\x80", 3},
      {"\xE0\xBF\xBF", 3},
      {"\xE0\xC0\x80", 0},
      {"\xE1\x7F\x80", 0},
      {"\xE1\x80\x80", 3},
      {"\xE1\x80\x7F", 0},
      {"\xE1\x80\xC0", 0},
      {"\xEC\xBF\xBF", 3},
      {"\xEC\xC0\x80", 0},
      {"\xEC\xBF", 0},
      {"\xED\x7F\x80", 0},
      {"\xED\x80\x80", 3},
      {"\xED\x9F\xBF", 3},
      {"\xED\xA0\x80", 0},
      {"\xEE\x7F\x80", 0},
      {"\xEE\x80\x80", 3},
      {"\xEF\xBF\xBF", 3},
      {"\xEF\xC0\x80", 0},
      {"\xF0\x8F\xBF\xBF", 0},
      {"\xF0\x90\x80\x80", 4},
      {"\xF0\xBF\xBF\xBF", 4},
      {"\xF0\xC0\x80\x80", 0},
      {"\xF1\x7F\x80\x80", 0},
      {"\xF1\x80\x80\x80", 4},
      {"\xF1\x80\x7F\x80", 0},
      {"\xF1\x80\x80\x7F", 0},
      {"\xF1\x80\x80\xC0", 0},
      {"\xF3\xBF\xBF\xBF", 4},
      {"\xF3\xC0\x80\x80", 0},
      {"\xF3\xBF\xBF", 0},
      {"\xF4\x7F\x80\x80", 0},
      {"\xF4\x80\x80\x80", 4},
      {"\xF4\x8F\xBF\xBF", 4},
      {"\xF4\x90\x80\x80", 0},
      {"\xF5\x80\x80\x80", 0},
      {"\xFF", 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.length, sequenceLength(c.bytes)) << testing::PrintToString(c.bytes);
  }
}

TEST(Utf8, EachByteOutsideASequenceIsReplacedByItself) {
  const struct {
    std::string text;
    std::string replaced;
  } cases[] = {
      {"", ""},
      {"M\xC3\xBCller", "M\xC3\xBCller"},
      {"M\xFCller", "M\xEF\xBF\xBDller"},
      {"\xE2\x82z", "\xEF\xBF\xBD\xEF\xBF\xBDz"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.replaced, toUtf8(c.text));
    EXPECT_EQ(c.text == c.replaced, isUtf8(c.text)) << c.replaced;
  }
}

}  // namespace
}  // namespace NKRXVEL20
