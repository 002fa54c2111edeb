// SPDX-License-Identifier: Apache-2.0
#include "host/text/utf8.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace velhost {
namespace {

#define FFFD "\xEF\xBF\xBD"

const struct {
  const char* what;
  std::string text;
  std::string replaced;
} kTexts[] = {
    {"empty", "", ""},
    {"ASCII", "DIMM 1", "DIMM 1"},
    {"zero byte", "a\0b"s, "a\0b"s},
    {"two bytes, first and last", "\xC2\x80\xDF\xBF", "\xC2\x80\xDF\xBF"},
    {"three bytes, first and last", "\xE0\xA0\x80\xEF\xBF\xBF", "\xE0\xA0\x80\xEF\xBF\xBF"},
    {"four bytes, first and last", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
     "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {"a Latin-1 byte", "M\xFCller", "M" FFFD "ller"},
    {"a continuation byte by itself", "\x80", FFFD},
    {"two bytes cut after one", "a\xC3", "a" FFFD},
    {"three bytes cut after two: each byte", "\xE2\x82", FFFD FFFD},
    {"three bytes broken by a letter", "\xE2\x82z", FFFD FFFD "z"},
    {"four bytes cut after three", "\xF0\x9F\x98", FFFD FFFD FFFD},
    {"overlong slash", "\xC0\xAF", FFFD FFFD},
    {"overlong three bytes", "\xE0\x9F\xBF", FFFD FFFD FFFD},
    {"overlong four bytes", "\xF0\x8F\xBF\xBF", FFFD FFFD FFFD FFFD},
    {"surrogate", "\xED\xA0\x80", FFFD FFFD FFFD},
    {"above U+10FFFF", "\xF4\x90\x80\x80", FFFD FFFD FFFD FFFD},
    {"lead bytes that never occur", "\xF5\xFF", FFFD FFFD},
    {"a good sequence behind a broken one", "\xC3\xC3\xA9", FFFD "\xC3\xA9"},
};

TEST(Utf8, EachByteOutsideASequenceIsReplacedByItself) {
  for (const auto& c : kTexts) {
    EXPECT_EQ(c.replaced, toUtf8(c.text)) << c.what;
    EXPECT_EQ(c.text == c.replaced, isUtf8(c.text)) << c.what;
  }
}

TEST(Utf8, ControlCharactersAndStrayBytesAreMadeVisible) {
  const struct {
    const char* what;
    std::string text;
    std::string shown;
  } cases[] = {
      {"plain", "1.08 [ABC]", "1.08 [ABC]"},
      {"line feed, return, tab", "a\nb\rc\td", "a\\nb\\rc\\td"},
      {"zero, escape, delete", "\0\x1B\x7F"s, "\\x00\\x1b\\x7f"},
      {"C1 controls U+0080 and U+009F", "\xC2\x80\xC2\x9F", "\\u0080\\u009F"},
      {"soft hyphen", "\xC2\xAD", "\\u00AD"},
      {"Arabic letter mark", "\xD8\x9C", "\\u061C"},
      {"zero-width space, right-to-left mark", "\xE2\x80\x8B\xE2\x80\x8F", "\\u200B\\u200F"},
      {"hair space and hyphen around them stay", "\xE2\x80\x8A\xE2\x80\x90",
       "\xE2\x80\x8A\xE2\x80\x90"},
      {"line separator, right-to-left override", "\xE2\x80\xA8\xE2\x80\xAE", "\\u2028\\u202E"},
      {"narrow no-break space behind them stays", "\xE2\x80\xAF", "\xE2\x80\xAF"},
      {"direction isolates U+2066 and U+2069", "\xE2\x81\xA6\xE2\x81\xA9", "\\u2066\\u2069"},
      {"byte order mark", "\xEF\xBB\xBF", "\\uFEFF"},
      {"tag letter U+E0041 in UTF-16", "\xF3\xA0\x81\x81", "\\uDB40\\uDC41"},
      {"U+1F600 stays", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"beside the soft hyphen", "\xC2\xAC\xC2\xAE", "\xC2\xAC\xC2\xAE"},
      {"beside the Arabic letter mark", "\xD8\x9B\xD8\x9D", "\xD8\x9B\xD8\x9D"},
      {"Mongolian vowel separator", "\xE1\xA0\x8D\xE1\xA0\x8E\xE1\xA0\x8F",
       "\xE1\xA0\x8D\\u180E\xE1\xA0\x8F"},
      {"hyphenation point before the line separator", "\xE2\x80\xA7", "\xE2\x80\xA7"},
      {"U+2060 to U+206F", "\xE2\x81\x9F\xE2\x81\xA0\xE2\x81\xAF\xE2\x81\xB0",
       "\xE2\x81\x9F\\u2060\\u206F\xE2\x81\xB0"},
      {"beside the byte order mark", "\xEF\xBB\xBE\xEF\xBC\x80", "\xEF\xBB\xBE\xEF\xBC\x80"},
      {"annotation, U+FFF9 to U+FFFB", "\xEF\xBF\xB8\xEF\xBF\xB9\xEF\xBF\xBB\xEF\xBF\xBC",
       "\xEF\xBF\xB8\\uFFF9\\uFFFB\xEF\xBF\xBC"},
      {"tags, U+E0000 to U+E007F",
       "\xF3\x9F\xBF\xBF\xF3\xA0\x80\x80\xF3\xA0\x81\xBF\xF3\xA0\x82\x80",
       "\xF3\x9F\xBF\xBF\\uDB40\\uDC00\\uDB40\\uDC7F\xF3\xA0\x82\x80"},
      {"no-break space stays", "\xC2\xA0", "\xC2\xA0"},
      {"a stray byte", "\xFF.", "\\xff."},
      {"umlaut stays", "\xC3\xBC", "\xC3\xBC"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.shown, visible(c.text)) << c.what;
}

TEST(Utf8, InJsonOnlyWhatJsonLeavesRawIsEscaped) {
  EXPECT_EQ("{\n \"a\\n\": \"\xC3\xBC\"}", escapeUnseen("{\n \"a\\n\": \"\xC3\xBC\"}"));
  EXPECT_EQ("\"\\u007F\\u0080\\u202E\"", escapeUnseen("\"\x7F\xC2\x80\xE2\x80\xAE\""));
}

TEST(Utf8, ALongTextLosesItsMiddle) {
  const struct {
    const char* what;
    std::string text;
    std::size_t most;
    std::string shown;
  } cases[] = {
      {"short", "abcdefghij", 10, "abcdefghij"},
      {"one too many", "abcdefghijk", 10, "abcd...ijk"},
      {"an odd number", "abcdefghijk", 9, "abc...ijk"},
      {"characters are kept whole", "\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC", 5,
       "\xC3\xBC...\xC3\xBC"},
      {"nothing but the dots has room", "abcd", 3, "..."},
      {"empty", "", 5, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.shown, shortened(c.text, c.most)) << c.what;
}

TEST(Utf8, CharactersAreCountedNotBytes) {
  EXPECT_EQ(0U, characterCount(""));
  EXPECT_EQ(6U, characterCount("M\xC3\xBCller"));
  EXPECT_EQ(2U, characterCount("\xF0\x9F\x98\x80!"));
}

}  // namespace
}  // namespace velhost
