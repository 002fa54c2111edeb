// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frucommonheader.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"

namespace ipmiinventory {
namespace {

TEST(FruCommonHeader, SaysWhereTheAreasAre) {
  //                           version, five offsets, pad, checksum
  const FruCommonHeader header = parseCommonHeader(hex("01 01 02 05 00 FF 00 F8"));
  EXPECT_EQ("", header.fault);
  EXPECT_EQ((std::array<std::size_t, 5>{8, 16, 40, 0, 2040}), header.areas);
}

TEST(FruCommonHeader, FaultsAreTold) {
  const struct {
    const char* bytes;
    const char* fault;
  } kCases[] = {
      {"", "too short"},
      {"01 00 00 01 00 00 00", "too short"},
      {"00 00 00 00 00 00 00 00", "blank"},
      {"FF FF FF FF FF FF FF FF", "blank"},
      {"02 00 00 01 00 00 00 FD", "version 2 is not known"},
      {"00 00 00 01 00 00 00 FF", "version 0 is not known"},
      {"01 00 00 01 00 00 00 FF", "wrong checksum"},
      {"01 00 00 01 00 00 00 FE", ""},
      {"F1 00 00 01 00 00 00 0E", ""},  // the upper four bits are reserved
      {"01 00 00 01 00 00 00 FE 99", ""},
  };
  for (const auto& c : kCases) {
    const FruCommonHeader header = parseCommonHeader(hex(c.bytes));
    EXPECT_EQ(c.fault, header.fault) << c.bytes;
    EXPECT_EQ(*c.fault == '\0' ? 8U : 0U, header.areas[3] + header.areas[2]) << c.bytes;
  }
}

TEST(FruCommonHeader, AnAreaEndsWhereTheNextOneBegins) {
  FruCommonHeader header;
  header.areas = {80, 8, 40, 0, 40};
  EXPECT_EQ(40U, endOfArea(header, 8, 256));
  EXPECT_EQ(80U, endOfArea(header, 40, 256));
  EXPECT_EQ(256U, endOfArea(header, 80, 256));
  EXPECT_EQ(64U, endOfArea(header, 40, 64));
}

TEST(FruCommonHeader, ChecksumIsASumOfZero) {
  EXPECT_TRUE(hasGoodChecksum(hex("")));
  EXPECT_TRUE(hasGoodChecksum(hex("80 7F 01")));
  EXPECT_FALSE(hasGoodChecksum(hex("80 7F 02")));
}

}  // namespace
}  // namespace ipmiinventory
