// SPDX-License-Identifier: Apache-2.0
#include "host/text/hextext.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(HexText, PairsWithBlanksAroundThemAreBytes) {
  const struct {
    const char* what;
    const char* text;
    Bytes bytes;
  } cases[] = {
      {"empty", "", {}},
      {"blanks only", "   ", {}},
      {"one pair", "0A", {0x0A}},
      {"spaced", "04 03 05 0B", {4, 3, 5, 0x0B}},
      {"run together, lower case", "0403050b", {4, 3, 5, 0x0B}},
      {"spaced now and then", " 0403  ff ", {4, 3, 0xFF}},
      {"every digit",
       "0123456789abcdefABCDEF",
       {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xAB, 0xCD, 0xEF}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.bytes, bytesOfHex(c.text)) << c.what;
}

TEST(HexText, WhatIsNoPairIsNamed) {
  const struct {
    const char* text;
    const char* complaint;
  } cases[] = {
      {"0", "the last hex pair has only one digit"},
      {"04 0", "the last hex pair has only one digit"},
      {"0 4", "blank inside a hex pair at character 2"},
      {"04 0 3", "blank inside a hex pair at character 5"},
      {"04 0G", "character 5 is no hex digit: \"G\""},
      {"0x04", "character 2 is no hex digit: \"x\""},
      {"04\t03", "character 3 is no hex digit: \"\\t\""},
      {"\xC3\xBC", "character 1 is no hex digit: \"\xC3\xBC\""},
  };
  for (const auto& c : cases) {
    try {
      bytesOfHex(c.text);
      ADD_FAILURE() << "accepted: " << c.text;
    } catch (const HexTextError& error) {
      EXPECT_STREQ(c.complaint, error.what()) << c.text;
    }
  }
}

TEST(HexText, BytesAreUpperCasePairsWithoutBlanks) {
  EXPECT_EQ("", hexOfBytes({}));
  EXPECT_EQ("00040B9AFF", hexOfBytes(Bytes{0x00, 0x04, 0x0B, 0x9A, 0xFF}));
}

TEST(HexText, PairsForPeopleHaveBlanksBetweenThem) {
  EXPECT_EQ("", hexPairs({}));
  EXPECT_EQ("0A", hexPairs(Bytes{0x0A}));
  EXPECT_EQ("00 04 FF", hexPairs(Bytes{0x00, 0x04, 0xFF}));
}

}  // namespace
}  // namespace velhost
