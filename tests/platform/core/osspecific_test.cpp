// SPDX-License-Identifier: Apache-2.0
#include "vel/osspecific.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace NKRXVEL20 {
namespace {

using namespace std::string_literals;

TEST(GetBIDString, CutsOneStringOutOfTheSet) {
  const std::string set =
      "Maker\0Model X\0"
      "1.08\0\0"s;
  const struct {
    const char* what;
    std::string source;
    int length;
    int number;
    std::string text;
  } kCases[] = {
      {"first", set, 20, 1, "Maker"},
      {"second", set, 20, 2, "Model X"},
      {"last", set, 20, 3, "1.08"},
      {"past the last", set, 20, 4, ""},
      {"far past the last", set, 20, 255, ""},
      {"number 0", set, 20, 0, ""},
      {"number below 0", set, 20, -1, ""},
      {"empty set", "\0\0after\0"s, 8, 1, ""},
      {"behind an empty set", "\0\0after\0"s, 8, 3, ""},
      {"behind the end of the set", "a\0\0b\0"s, 5, 3, ""},
      {"cut off by the window", set, 3, 1, "Mak"},
      {"cut off in the second string", set, 9, 2, "Mod"},
      {"window up to the zero byte", set, 5, 1, "Maker"},
      {"window ends before the string", set, 6, 2, ""},
      {"window ends inside an earlier string", set, 3, 2, ""},
      {"no window", set, 0, 1, ""},
      {"window below 0", set, -1, 1, ""},
      {"99 characters", std::string(99, 'x') + "\0\0"s, 101, 1, std::string(99, 'x')},
      {"100 characters are cut", std::string(100, 'x') + "\0\0"s, 102, 1, std::string(99, 'x')},
      {"300 characters are cut", std::string(300, 'x') + "\0\0"s, 302, 1, std::string(99, 'x')},
  };
  for (auto c : kCases) {  // a copy: the function takes characters that may be written
    std::array<char, 101> destination{};
    destination.fill('#');
    TOSSpecific::getBIDString(c.source.data(), destination.data(), c.length, c.number);
    EXPECT_EQ(c.text, destination.data()) << c.what;
    EXPECT_EQ('#', destination[100]) << c.what << ": written behind the destination";
  }
}

TEST(RemoveNonAlpaNumeric, KeepsAsciiLettersAndDigits) {
  const struct {
    const char* what;
    std::string text;
    std::string kept;
  } kCases[] = {
      {"version with brackets", "1.08 [ABC123]", "108ABC123"},
      {"the ends of the ranges", "/09:@AZ[`az{", "09AZaz"},
      {"nothing to keep", " -._\t", ""},
      {"empty", "", ""},
      {"bytes above ASCII", "a\xE4\xC3\xA4z\xFF", "az"},
      {"a zero byte", "a\0b"s, "ab"},
  };
  for (const auto& c : kCases) {
    std::string text = c.text;
    TOSSpecific::removeNonAlpaNumeric(text);
    EXPECT_EQ(c.kept, text) << c.what;
  }
}

TEST(BreakApartVersion, SplitsVersionFromBuild) {
  const struct {
    const char* text;
    const char* version;
    const char* build;
  } kCases[] = {
      // Digits in front.
      {"108ABC123", "108", "ABC123"},
      {"12aXY", "12a", "XY"},
      {"12a", "12a", ""},
      {"12a3", "12a", "3"},
      {"1162debian1", "1162", "debian1"},
      {"12ab", "12", "ab"},
      {"300", "300", ""},
      {"1A", "1", "A"},
      // Digits at the end.
      {"ABC123A120", "120", "ABC123A"},
      {"DIA789C12a", "12a", "DIA789C"},
      {"DIA789", "789", "DIA"},
      {"a1", "1", "a"},
      // No version.
      {"DIA789C", "", "DIA789C"},
      {"DIA789ab", "", "DIA789ab"},
      {"ABC", "", "ABC"},
      {"a", "", "a"},
      {"", "", ""},
  };
  for (const auto& c : kCases) {
    std::string version = c.text;
    std::string build = "before";
    TOSSpecific::breakApartVersion(version, build);
    EXPECT_EQ(c.version, version) << c.text;
    EXPECT_EQ(c.build, build) << c.text;
  }
}

}  // namespace
}  // namespace NKRXVEL20
