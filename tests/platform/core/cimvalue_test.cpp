// SPDX-License-Identifier: Apache-2.0
#include "vel/cimvalue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace NKRXVEL20 {
namespace {

constexpr std::uint64_t kAllOnes = 0xFFFFFFFFFFFFFFFFU;

TEST(TCIMValue, KnowsItsTypeTextAndNumber) {
  const struct {
    const char* what;
    TCIMValue value;
    ECIMType type;
    const char* text;
    std::uint64_t number;
  } kCases[] = {
      {"empty", TCIMValue(), ECIMType::kEmpty, "", 0},
      {"literal", TCIMValue("DIMM 1"), ECIMType::kString, "DIMM 1", 0},
      {"text", TCIMValue(std::string("x")), ECIMType::kString, "x", 0},
      {"text of digits", TCIMValue("66"), ECIMType::kString, "66", 0},
      {"empty text", TCIMValue(""), ECIMType::kString, "", 0},
      {"true", TCIMValue(true), ECIMType::kBoolean, "true", 0},
      {"false", TCIMValue(false), ECIMType::kBoolean, "false", 0},
      {"uint8", TCIMValue(std::uint8_t{255}), ECIMType::kUint8, "255", 255},
      {"uint16", TCIMValue(std::uint16_t{65535}), ECIMType::kUint16, "65535", 65535},
      {"uint64", TCIMValue(kAllOnes), ECIMType::kUint64, "18446744073709551615", kAllOnes},
      {"zero", TCIMValue(std::uint64_t{0}), ECIMType::kUint64, "0", 0},
      {"datetime", TCIMValue(TCIMDateTime("20090714000000.000000+000")), ECIMType::kDateTime,
       "20090714000000.000000+000", 0},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.type, c.value.GetType()) << c.what;
    EXPECT_EQ(c.text, c.value.ToString()) << c.what;
    EXPECT_EQ(c.number, c.value.ToUint64()) << c.what;
  }
}

TEST(TCIMValue, WritesNumbersInTheBaseAskedFor) {
  EXPECT_EQ("11111111", TCIMValue(std::uint8_t{255}).ToString(2));
  EXPECT_EQ("ffff", TCIMValue(std::uint16_t{65535}).ToString(16));
  EXPECT_EQ("z", TCIMValue(std::uint64_t{35}).ToString(36));
  EXPECT_EQ(std::string(64, '1'), TCIMValue(kAllOnes).ToString(2));
  EXPECT_EQ("10", TCIMValue("10").ToString(16));
}

TEST(TCIMValue, CutsANumberToAByte) {
  EXPECT_EQ(2, TCIMValue(std::uint8_t{2}).ToUint8());
  EXPECT_EQ(0x34, TCIMValue(std::uint16_t{0x1234}).ToUint8());
  EXPECT_EQ(0, TCIMValue().ToUint8());
}

TEST(TCIMValue, ValuesOfDifferentTypesDiffer) {
  EXPECT_EQ(TCIMValue("a"), TCIMValue(std::string("a")));
  EXPECT_FALSE(TCIMValue(std::uint8_t{3}) == TCIMValue(std::uint16_t{3}));
  EXPECT_FALSE(TCIMValue("") == TCIMValue());
}

}  // namespace
}  // namespace NKRXVEL20
