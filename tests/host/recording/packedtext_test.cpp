// SPDX-License-Identifier: Apache-2.0
#include "host/recording/packedtext.h"

#include <gtest/gtest.h>

#include <string>

namespace velhost {
namespace {

TEST(PackedText, IsReadAndPutBack) {
  const struct {
    const char* what;
    Bytes (*read)(std::span<const unsigned char>);
    void (*write)(const Bytes&, std::span<unsigned char>);
    const char* field;
    std::string text;
    std::string other;
    const char* written;
  } kCases[] = {
      {"UTF-16", readWide, writeWide, "41 00 AC 20", "A\xAC", "BC", "42 00 43 20"},
      {"UTF-16, an odd byte", readWide, writeWide, "41 00 42", "AB", "CD", "43 00 44"},
      {"BCD plus", readBcdPlus, writeBcdPlus, "12 0A B3", "120 -3", "340 -5", "34 0A B5"},
      {"BCD plus, the last ones", readBcdPlus, writeBcdPlus, "CD EF", ".:,_", "_,:.", "FE DC"},
      {"BCD plus, all", readBcdPlus, writeBcdPlus, "01 23 45 67 89 AB CD EF", "0123456789 -.:,_",
       "_,:.- 9876543210", "FE DC BA 98 76 54 32 10"},
      {"six bits", readSixBit, writeSixBit, "29 DC A6", "IPMI", "IMPI", "69 0B A7"},
      {"six bits, two left over", readSixBit, writeSixBit, "29 DC", "IP", "PI", "70 DA"},
      {"nothing", readSixBit, writeSixBit, "", "", "", ""},
  };
  for (const auto& c : kCases) {
    Bytes field = bytesOfHex(c.field);
    const Bytes text = c.read(field);
    EXPECT_EQ(c.text, std::string(text.begin(), text.end())) << c.what;
    c.write(text, field);
    EXPECT_EQ(bytesOfHex(c.field), field) << c.what;
    c.write({c.other.begin(), c.other.end()}, field);
    EXPECT_EQ(bytesOfHex(c.written), field) << c.what;
  }
}

}  // namespace
}  // namespace velhost
