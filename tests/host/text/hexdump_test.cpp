// SPDX-License-Identifier: Apache-2.0
#include "host/text/hexdump.h"

#include <gtest/gtest.h>

#include "host/text/hextext.h"

namespace velhost {
namespace {

Bytes counted(unsigned char count) {
  Bytes bytes;
  for (unsigned char i = 0; i < count; ++i) bytes.push_back(static_cast<unsigned char>(0x3F + i));
  return bytes;
}

TEST(HexDump, HasSixteenBytesARowWhereTheyFit) {
  EXPECT_EQ(
      "     9  3F 40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E  |?@ABCDEFGHIJKLMN|\n"
      "    25  4F 50                                            |OP|\n",
      hexDump(counted(18), 9, 4, 80, 64));
}

TEST(HexDump, HasEightBytesARowWhereMoreDoNot) {
  EXPECT_EQ(
      "0  3F 40 41 42 43 44 45 46  |?@ABCDEF|\n"
      "8  47                       |G|\n",
      hexDump(counted(9), 0, 0, 69, 64));
}

TEST(HexDump, ShowsPointsForWhatIsNoText) {
  EXPECT_EQ("   7  00 1B 20 7E 7F FF  |.. ~..|\n",
            hexDump(bytesOfHex("00 1B 20 7E 7F FF"), 7, 2, 80, 64));
}

TEST(HexDump, TellsWhatIsLeftOut) {
  EXPECT_EQ("  0  3F 40  |?@|\n  and 3 bytes more\n", hexDump(counted(5), 0, 2, 80, 2));
  EXPECT_EQ("", hexDump({}, 0, 2, 80, 2));
}

}  // namespace
}  // namespace velhost
