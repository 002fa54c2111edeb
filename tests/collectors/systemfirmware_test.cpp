// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/systemfirmware.h"

#include <gtest/gtest.h>

#include "structurebytes.h"

namespace smbiosinventory {
namespace {

const OwnedBytes kFields = {
    1,    2,    0x00, 0xF0,              // vendor, version, starting segment
    3,    0x3F,                          // release date, 64 blocks of 64 KB
    0x80, 0x98, 0x09, 0,    0, 0, 0, 0,  // characteristics
    0x03, 0x0D,                          // their extension: UEFI is bit 3 of the second byte
    2,    10,   1,    31,                // releases
    0x20, 0x00,                          // extended size of the ROM
};
const std::vector<std::string> kStrings = {"Corvane Firmware ", "2.10.1 ", "03/14/2024"};

TEST(SystemFirmware, IsToldAsItIsWritten) {
  const OwnedBytes bytes = structureBytes(0, kFields, kStrings);
  EXPECT_EQ((std::vector<std::string>{
                R"(InstanceID="KRXSG:SystemFirmware:2")", R"(Vendor="Corvane Firmware")",
                R"(Version="2.10.1 ")", "ReleaseDate=2024-3-14", R"(SystemFirmwareRevision="2.10")",
                R"(EmbeddedControllerRevision="1.31")", "ROMSize=4194304", "UEFI=true"}),
            shown(systemFirmware(Structure(bytes), 2)));
}

// What each length of the structure has: 2.0, 2.4 without and with the releases, 3.1.
TEST(SystemFirmware, TellsWhatItsLengthHas) {
  const struct {
    std::size_t length;
    std::size_t properties;
  } kCases[] = {{0x04, 1}, {0x05, 2}, {0x09, 4}, {0x0A, 5}, {0x12, 5}, {0x13, 5},
                {0x14, 6}, {0x15, 6}, {0x16, 7}, {0x17, 7}, {0x18, 8}, {0x1A, 8}};
  for (const auto& c : kCases) {
    const auto end = kFields.begin() + static_cast<std::ptrdiff_t>(c.length - 4);
    const OwnedBytes bytes = structureBytes(0, {kFields.begin(), end}, kStrings);
    EXPECT_EQ(c.properties, systemFirmware(Structure(bytes), 1).size()) << c.length;
  }
}

TEST(SystemFirmware, DatesAreThoseOfTheStandard) {
  const std::pair<const char*, const char*> kCases[] = {
      {"03/14/2024", "2024-3-14"}, {"03/14/2024  ", "2024-3-14"}, {"03/15/07", "2007-3-15"},
      {"12/31/50", "2050-12-31"},  {"01/01/51", "1951-1-1"},      {"02/29/2024", "2024-2-29"},
      {"02/29/2023", "nothing"},   {"00/10/2020", "nothing"},     {"13/10/2020", "nothing"},
      {"04/31/2020", "nothing"},   {"01/00/2020", "nothing"},     {"01/01/0000", "nothing"},
      {"01/01/0001", "1-1-1"},     {"1/1/2020", "nothing"},       {"01-01-2020", "nothing"},
      {"2020-01-01", "nothing"},   {"01/01/20x0", "nothing"},     {"+1/01/2020", "nothing"},
      {"01/01-2020", "nothing"},   {"01/x1/2020", "nothing"},     {"x1/01/2020", "nothing"},
      {"01/01/020", "nothing"},    {" 01/01/2020", "nothing"},    {"01/01/2020x", "nothing"},
      {"not known", "nothing"},
  };
  for (const auto& [text, date] : kCases) {
    const OwnedBytes bytes = structureBytes(0, kFields, {"v", "1", text});
    EXPECT_EQ(date, valueOf(systemFirmware(Structure(bytes), 1), "ReleaseDate")) << text;
  }
}

TEST(SystemFirmware, HalfAReleaseIsNone) {
  const struct {
    OwnedBytes releases;
    const char* firmware;
    const char* controller;
  } kCases[] = {
      {{0, 0, 0, 0}, R"("0.0")", R"("0.0")"},
      {{254, 254, 1, 2}, R"("254.254")", R"("1.2")"},
      {{0xFF, 5, 5, 0xFF}, "nothing", "nothing"},
      {{0xFF, 0xFF, 3, 9}, "nothing", R"("3.9")"},
  };
  for (const auto& c : kCases) {
    const OwnedBytes bytes = structureBytes(0, fieldsWith(0x18, 0x14, c.releases));
    const Record record = systemFirmware(Structure(bytes), 1);
    EXPECT_EQ(c.firmware, valueOf(record, "SystemFirmwareRevision"));
    EXPECT_EQ(c.controller, valueOf(record, "EmbeddedControllerRevision"));
  }
}

TEST(SystemFirmware, SizesOfTheRom) {
  const struct {
    const char* what;
    std::size_t length;
    unsigned char blocks;
    OwnedBytes extended;
    const char* size;
  } kCases[] = {
      {"one block", 0x12, 0x00, {}, "65536"},
      {"254 blocks more", 0x1A, 0xFE, {0x20, 0x00}, "16711680"},
      {"FFh without the extended field", 0x18, 0xFF, {}, "16777216"},
      {"32 MB", 0x1A, 0xFF, {0x20, 0x00}, "33554432"},
      {"16383 MB", 0x1A, 0xFF, {0xFF, 0x3F}, "17178820608"},
      {"1 GB", 0x1A, 0xFF, {0x01, 0x40}, "1073741824"},
      {"a unit that is reserved", 0x1A, 0xFF, {0x01, 0x80}, "nothing"},
      {"the other one", 0x1A, 0xFF, {0x01, 0xC0}, "nothing"},
      {"nothing of MB", 0x1A, 0xFF, {0x00, 0x00}, "nothing"},
  };
  for (const auto& c : kCases) {
    OwnedBytes fields = fieldsWith(c.length, 0x18, c.extended);
    fields[0x09 - 4] = c.blocks;
    const OwnedBytes bytes = structureBytes(0, fields);
    EXPECT_EQ(c.size, valueOf(systemFirmware(Structure(bytes), 1), "ROMSize")) << c.what;
  }
}

TEST(SystemFirmware, UefiIsOneBit) {
  const std::pair<unsigned char, const char*> kCases[] = {
      {0x00, "false"}, {0x08, "true"}, {0xF7, "false"}, {0xFF, "true"}};
  for (const auto& [byte, value] : kCases) {
    const OwnedBytes bytes = structureBytes(0, fieldsWith(0x14, 0x13, {byte}));
    EXPECT_EQ(value, valueOf(systemFirmware(Structure(bytes), 1), "UEFI")) << int{byte};
  }
}

}  // namespace
}  // namespace smbiosinventory
