// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/bmcdevices.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

Reply reply(const char* command, const char* data, const char* bytes) {
  Bytes record = bytesOfHex(bytes);
  const auto length = static_cast<std::int32_t>(record.size());
  return {Source::kIpmi, bytesOfHex(command), bytesOfHex(data), 0, length, std::move(record)};
}

// Interface, address, function, LUN; the completion code; then the data.
constexpr char kLocator[] =
    "01 20 2B 00 00  03 00"                                  // the next record's ID
    " 02 00 51 11 0C  20 05 80 00 00 10 00 0A 01 00 C1 41";  // device 5 at the BMC
constexpr char kElsewhere[] =
    "01 20 2B 00 00  FF FF"
    " 03 00 51 11 0C  24 06 80 00 00 10 00 0A 01 00 C1 42";  // behind another controller

TEST(BmcDevices, ArePutTogetherFromTheirReads) {
  const auto devices = fruDevices({
      reply("0A 23", "00 00 02 00 00 FF", kLocator),
      reply("0A 23", "00 00 03 00 00 FF", kElsewhere),
      reply("0A 10", "05", "01 20 2B 00 00  00 01 01"),  // told in words
      reply("0A 11", "05 00 00 02", "01 20 2B 00 00  02 AA BB CC DD"),
      reply("0A 11", "05 02 00 01", "01 20 2B 00 00  01 EE FF"),
      reply("0A 11", "05 04 00 01", "01 20 2B 00 CB"),               // refused
      reply("0A 11", "00 01 00 02", "01 20 2B 00 00  02 77 88 99"),  // told in bytes
  });
  ASSERT_EQ(2U, devices.size());
  EXPECT_EQ(0U, devices[0].number);
  EXPECT_EQ(Bytes(), devices[0].record);
  EXPECT_EQ(bytesOfHex("00 77 88"), devices[0].bytes) << "no more than the count says";
  EXPECT_EQ(5U, devices[1].number);
  EXPECT_EQ("020051110C200580000010000A0100C141", hexOfBytes(devices[1].record));
  EXPECT_EQ(bytesOfHex("AA BB CC DD EE FF"), devices[1].bytes);
}

TEST(BmcDevices, ARecordMayComeInPieces) {
  const auto devices = fruDevices({
      reply("0A 23", "01 00 02 00 00 05", "01 20 2B 00 00  03 00 02 00 51 12 0B"),
      reply("0A 23", "01 00 02 00 05 0B", "01 20 2B 00 00  03 00 20 00 00 08 00 00 00 07 01 00 C0"),
  });
  ASSERT_EQ(1U, devices.size());
  EXPECT_EQ(0U, devices[0].number) << "a controller's record stands for its device 0";
  EXPECT_EQ(bytesOfHex("02 00 51 12 0B 20 00 00 08 00 00 00 07 01 00 C0"), devices[0].record);
}

TEST(BmcDevices, ARecordIsAsLongAsItSaysIfAllOfItWasRead) {
  const struct {
    const char* what;
    const char* reply;
    const char* record;
  } kCases[] = {
      {"a byte behind it is none of its own",
       "01 20 2B 00 00  03 00 02 00 51 11 0C  20 05 80 00 00 10 00 0A 01 00 C1 41 EE",
       "02 00 51 11 0C  20 05 80 00 00 10 00 0A 01 00 C1 41"},
      {"its last byte was not read",
       "01 20 2B 00 00  03 00 02 00 51 11 0C  20 05 80 00 00 10 00 0A 01 00 C1",
       "02 00 51 11 0C  20 05 80 00 00 10 00 0A 01 00 C1"},
  };
  for (const auto& c : kCases) {
    const auto devices = fruDevices({reply("0A 23", "00 00 02 00 00 FF", c.reply)});
    ASSERT_EQ(1U, devices.size()) << c.what;
    EXPECT_EQ(bytesOfHex(c.record), devices[0].record) << c.what;
  }
}

TEST(BmcDevices, ShortRepliesAreNone) {
  EXPECT_TRUE(fruDevices({reply("0A 11", "05 00 00 02", "01 20 2B 00"),
                          reply("0A 23", "00 00 02 00 00 FF", "01 20 2B 00 00 03"),
                          reply("0A 11", "05", "01 20 2B 00 00 02 AA BB")})
                  .empty());
}

}  // namespace
}  // namespace velhost
