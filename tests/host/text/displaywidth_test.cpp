// SPDX-License-Identifier: Apache-2.0
#include "host/text/displaywidth.h"

#include <gtest/gtest.h>

#include <clocale>

namespace velhost {
namespace {

using Lines = std::vector<std::string>;

// U+65E5 U+672C, which take two columns each.
constexpr char kNihon[] = "\xE6\x97\xA5\xE6\x9C\xAC";
// e with an acute accent (U+0301).
constexpr char kAccented[] = "e\xCC\x81";

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(DisplayWidth, IsInColumns) {
  const struct {
    const char* what;
    std::string text;
    std::size_t width;
  } cases[] = {
      {"nothing", "", 0},
      {"ASCII", "DIMM 1", 6},
      {"a letter with a diaeresis",
       "R\xC3\xBC"
       "ckwand",
       8},
      {"East Asian letters", kNihon, 4},
      {"a mark on a letter", kAccented, 1},
      {"four marks on a letter", "e" + repeated("\xCC\x81", 4), 1},
      {"more marks than any script has", "e" + repeated("\xCC\x81", 9), 2},
      {"a mark on nothing", "\xCC\x81", 1},
      {"an emoji", "\xF0\x9F\x98\x80", 2},
      {"a character that is none yet (U+0378)", "\xCD\xB8", 2},
      {"a byte that is no text", "\xFF", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(c.width, displayWidth(c.text)) << c.what;
}

// Whatever the user's language is.
TEST(DisplayWidth, IsTheSameInEveryLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* const locale : {"C", "C.UTF-8", "POSIX"}) {
    if (std::setlocale(LC_ALL, locale) == nullptr) continue;
    EXPECT_EQ(4U, displayWidth(kNihon)) << locale;
  }
  std::setlocale(LC_ALL, before.c_str());
}

TEST(CutToWidth, TakesTheMiddleOut) {
  const struct {
    const char* what;
    std::string text;
    std::size_t width;
    std::string cut;
  } cases[] = {
      {"it has room", "DIMM 1", 6, "DIMM 1"},
      {"it has not", "KRXDiagnosticsDSYT83A", 12, "KRXDi...T83A"},
      {"an odd rest goes to the head", "0123456789", 8, "012...89"},
      {"one more than the dots", "0123456789", 4, "0..."},
      {"the dots alone", "0123456789", 3, "..."},
      {"two columns", "0123456789", 2, ".."},
      {"one column", "0123456789", 1, "."},
      {"no column", "0123456789", 0, ""},
      {"nothing of nothing", "", 0, ""},
      {"wide letters are not halved", repeated(kNihon, 4), 10,
       kNihon + std::string("...\xE6\x9C\xAC")},
      {"letters of several bytes are not parted", repeated("\xE2\x82\xAC", 10), 5,
       "\xE2\x82\xAC...\xE2\x82\xAC"},
      {"marks stay on their letters", repeated(kAccented, 10), 5,
       std::string(kAccented) + "..." + kAccented},
  };
  for (const auto& c : cases) EXPECT_EQ(c.cut, cutToWidth(c.text, c.width)) << c.what;
}

TEST(CutToWidth, ALongTextTakesLittleTime) {
  const std::string text = "begin" + std::string(10'000'000, 'x') + "end";
  EXPECT_EQ("begin...xend", cutToWidth(text, 12));
  const std::string marks = "b" + repeated("\xCC\x81", 1'000'000);
  EXPECT_LE(cutToWidth(marks, 20).size(), 200U);
}

TEST(Wrapped, StaysInsideTheWidth) {
  const struct {
    const char* what;
    std::string text;
    std::size_t width;
    Lines lines;
  } cases[] = {
      {"nothing", "", 10, {""}},
      {"one line", "one two", 7, {"one two"}},
      {"at a blank", "one two", 6, {"one", "two"}},
      {"two blanks stay", "one  two", 8, {"one  two"}},
      {"a word that is too long", "abcdefgh ij", 3, {"abc", "def", "gh", "ij"}},
      {"a long word behind a short one", "ab cdefgh", 4, {"ab", "cdef", "gh"}},
      {"one column", "ab c", 1, {"a", "b", "c"}},
      {"wide letters", std::string(kNihon) + kNihon, 5, {kNihon, kNihon}},
      {"a letter that is wider than a line", kNihon, 1, {".", "."}},
      {"marks stay on their letters",
       repeated(kAccented, 3),
       2,
       {repeated(kAccented, 2), kAccented}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, wrapped(c.text, c.width)) << c.what;
}

TEST(Wrapped, WordsWithBlanksAreKeptTogether) {
  EXPECT_EQ(Lines({"Name UEFI,", "Vendor KRX"}), wrappedWords({"Name UEFI,", "Vendor KRX"}, 12));
  EXPECT_EQ(Lines({"Name UEFI, Vendor KRX"}), wrappedWords({"Name UEFI,", "Vendor KRX"}, 21));
}

TEST(Padded, HasBlanksBehind) {
  EXPECT_EQ("a  ", padded("a", 3));
  EXPECT_EQ("abcd", padded("abcd", 3));
  EXPECT_EQ(std::string(kNihon) + " ", padded(kNihon, 5));
}

}  // namespace
}  // namespace velhost
