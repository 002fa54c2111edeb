// SPDX-License-Identifier: Apache-2.0
#include "host/machine/smbiosparts.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(SmbiosParts, WholeStructuresAndTheirParts) {
  const struct {
    const char* what;
    const char* bytes;
    SmbiosParts parts;
  } cases[] = {
      {"no strings", "7F 04 FE FF 00 00", {127, 0xFFFE, {}, {}}},
      {"data and no strings", "20 06 00 01 AA BB 00 00", {32, 0x0100, {0xAA, 0xBB}, {}}},
      {"one string", "0B 05 01 00 01 41 42 00 00", {11, 1, {1}, {"AB"}}},
      {"two strings", "00 04 02 00 41 00 20 00 00", {0, 2, {}, {"A", " "}}},
      {"a string that is no UTF-8", "00 04 02 00 FF 00 00", {0, 2, {}, {"\xFF"}}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.bytes, hexPairs(wholeStructure(c.parts))) << c.what;
    const auto parts = takeApart(bytesOfHex(c.bytes));
    ASSERT_TRUE(parts) << c.what;
    EXPECT_EQ(c.parts, *parts) << c.what;
  }
}

TEST(SmbiosParts, TheLargestFormattedAreaIsTakenApart) {
  const SmbiosParts largest{1, 2, Bytes(251, 0x55), {"A"}};
  EXPECT_EQ(255, wholeStructure(largest)[1]);
  EXPECT_EQ(largest, takeApart(wholeStructure(largest)));
  EXPECT_NE(largest, takeApart(wholeStructure({1, 2, Bytes(250, 0x55), {"A"}})));
}

TEST(SmbiosParts, WhatNoPartsGiveIsNotTakenApart) {
  const struct {
    const char* what;
    const char* bytes;
  } cases[] = {
      {"nothing", ""},
      {"type only", "0B"},
      {"header cut short", "0B 04 01"},
      {"header only", "0B 04 01 00"},
      {"length below the header's", "0B 03 01 00 00 00"},
      {"length past the end", "0B 09 01 00 00 00"},
      {"string set of one zero byte", "0B 04 01 00 00"},
      {"string without its zero byte", "0B 04 01 00 41"},
      {"set without its last zero byte", "0B 04 01 00 41 00"},
      {"bytes behind the set", "0B 04 01 00 41 00 00 42"},
      {"three zero bytes", "0B 04 01 00 00 00 00"},
  };
  for (const auto& c : cases) EXPECT_FALSE(takeApart(bytesOfHex(c.bytes))) << c.what;
}

TEST(SmbiosParts, TextsOfASetHoweverItEnds) {
  const struct {
    const char* what;
    const char* bytes;
    std::vector<std::string> texts;
  } cases[] = {
      {"nothing", "", {}},
      {"no set", "0B 04 01 00", {}},
      {"empty set", "0B 04 01 00 00 00", {}},
      {"two texts", "0B 05 01 00 02 41 00 42 43 00 00", {"A", "BC"}},
      {"behind an empty text the set is over", "0B 04 01 00 41 00 00 42", {"A"}},
      {"cut off", "0B 04 01 00 41 00 42", {"A", "B"}},
      {"length past the end", "0B FF 01 00 41 00 42", {}},
  };
  for (const auto& c : cases) {
    Bytes bytes = bytesOfHex(c.bytes);
    std::vector<std::string> texts;
    for (const auto text : stringSet(bytes)) texts.emplace_back(text.begin(), text.end());
    EXPECT_EQ(c.texts, texts) << c.what;
  }
}

}  // namespace
}  // namespace velhost
