// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/deviceid.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"

namespace ipmiinventory {
namespace {

//                     ID, revision, firmware, IPMI, support, manufacturer, product, auxiliary
constexpr char kFull[] = "20 81 82 13 02 BF 57 01 00 34 12 01 0A 00 FF";

TEST(DeviceId, HasAllThatIsGiven) {
  const auto id = decodeDeviceId(hex(kFull));
  ASSERT_TRUE(id);
  EXPECT_EQ(0x20, id->deviceId);
  EXPECT_EQ(1, id->deviceRevision);        // bit 7 says that there are device SDRs
  EXPECT_EQ("2.13", id->firmwareVersion);  // bit 7 says that the controller is busy
  EXPECT_EQ("010A00FF", id->auxiliaryFirmwareRevision);
  EXPECT_EQ("2.0", id->ipmiVersion);
  EXPECT_TRUE(id->hasSdrRepository);
  EXPECT_EQ(343U, id->manufacturerId);
  EXPECT_EQ(0x1234, id->productId);
}

TEST(DeviceId, AuxiliaryRevisionMayBeZero) {
  EXPECT_EQ("00000000", decodeDeviceId(hex("20 01 02 13 02 02 57 01 00 34 12 00 00 00 00"))
                            ->auxiliaryFirmwareRevision);
}

TEST(DeviceId, AuxiliaryRevisionMayBeLeftOut) {
  Bytes bytes = hex(kFull);
  for (bytes.resize(14); bytes.size() >= 11; bytes.pop_back()) {
    const auto id = decodeDeviceId(bytes);
    ASSERT_TRUE(id) << bytes.size();
    EXPECT_EQ("", id->auxiliaryFirmwareRevision);
    EXPECT_EQ(0x1234, id->productId);
  }
  EXPECT_FALSE(decodeDeviceId(bytes));
  EXPECT_FALSE(decodeDeviceId({}));
}

TEST(DeviceId, VersionsAreWrittenAsIpmiDoes) {
  const struct {
    std::uint8_t major;
    std::uint8_t minor;
    std::uint8_t ipmi;
    const char* firmwareVersion;
    const char* ipmiVersion;
  } kCases[] = {
      {0x00, 0x00, 0x00, "0.00", "0.0"},
      {0x7F, 0x99, 0x51, "127.99", "1.5"},
      {0xFF, 0x05, 0x02, "127.05", "2.0"},
      {0x01, 0x1A, 0xFF, "1.1A", "15.15"},  // no decimal digits
  };
  for (const auto& c : kCases) {
    Bytes bytes = hex(kFull);
    bytes[2] = c.major;
    bytes[3] = c.minor;
    bytes[4] = c.ipmi;
    EXPECT_EQ(c.firmwareVersion, decodeDeviceId(bytes)->firmwareVersion);
    EXPECT_EQ(c.ipmiVersion, decodeDeviceId(bytes)->ipmiVersion);
  }
}

TEST(DeviceId, NumbersThatNameNobodyAreNotSet) {
  const struct {
    const char* manufacturerAndProduct;
    std::optional<std::uint64_t> manufacturerId;
    std::optional<std::uint16_t> productId;
  } kCases[] = {
      {"00 00 00 00 00", std::nullopt, std::nullopt},  // unspecified
      {"FF FF 0F FF FF", std::nullopt, std::nullopt},  // reserved
      {"FF FF FF FF FF", std::nullopt, std::nullopt},  // four bits do not count
      {"00 00 F0 01 00", std::nullopt, 1},
      {"01 00 00 00 01", 1, 256},
      {"FE FF 0F FE FF", 0xFFFFE, 0xFFFE},
      {"00 00 01 00 80", 0x10000, 0x8000},
  };
  for (const auto& c : kCases) {
    const auto id = decodeDeviceId(hex("20 81 02 13 02 00") + hex(c.manufacturerAndProduct));
    ASSERT_TRUE(id);
    EXPECT_EQ(c.manufacturerId, id->manufacturerId) << c.manufacturerAndProduct;
    EXPECT_EQ(c.productId, id->productId) << c.manufacturerAndProduct;
    EXPECT_FALSE(id->hasSdrRepository);
  }
}

TEST(Guid, IsTheBytesFromTheLastOne) {
  const struct {
    const char* what;
    const char* bytes;
    const char* text;
  } kCases[] = {
      {"node, clock, time", "66 55 44 33 22 11 34 92 EF 41 CD AB 78 56 34 12",
       "12345678-abcd-41ef-9234-112233445566"},
      {"bytes behind it", "66 55 44 33 22 11 34 92 EF 41 CD AB 78 56 34 12 AA",
       "12345678-abcd-41ef-9234-112233445566"},
      {"a byte short", "66 55 44 33 22 11 34 92 EF 41 CD AB 78 56 34", ""},
      {"nothing", "", ""},
      {"zeros", "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", ""},
      {"ones", "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF", ""},
      {"one bit", "01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
       "00000000-0000-0000-0000-000000000001"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.text, guidText(hex(c.bytes))) << c.what;
}

}  // namespace
}  // namespace ipmiinventory
