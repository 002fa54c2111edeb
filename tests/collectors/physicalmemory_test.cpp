// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/physicalmemory.h"

#include <gtest/gtest.h>

#include "structurebytes.h"

namespace smbiosinventory {
namespace {

using Lines = std::vector<std::string>;

const OwnedBytes kFields = {
    0x00, 0x10, 0xFE, 0xFF,           // array, no error
    0x50, 0x00, 0x40, 0x00,           // widths
    0xFF, 0x7F, 0x09, 0x00,           // size: see the extended field; DIMM, no set
    1,    2,    0x22, 0x80, 0x20,     // locators, DDR5, type detail
    0xC0, 0x12, 3,    4,    5,    6,  // 4800 MT/s, maker, serial number, asset tag, part number
    0x02, 0x00, 0x80, 0x00, 0x00,     // rank, 32768 MB
    0x30, 0x11, 0x4C, 0x04, 0x4C, 0x04, 0x4C, 0x04,  // configured speed, voltages
    0x03, 0x08, 0x00, 0x00,                          // technology, mode, firmware version
    0x80, 0xCE, 0,    0,    0,    0,    0,    0,     // makers and products
    0,    0,    0,    0,    0,    0,    0,    0,     // non-volatile, volatile,
    0,    0,    0,    0,    8,    0,    0,    0,
    0,    0,    0,    0,    0,    0,    0,    0,  // cache and logical size
    0,    0,    0,    0,    0,    0,    0,    0,
    0,    0,    0,    0,    0,    0,    0,    0,  // extended speeds
};

const Lines kStrings = {"P1-A1 ", "Channel A ", "Maker ", "S1 ", "tag ", "part "};

Lines told(const OwnedBytes& bytes) { return shown(physicalMemory(Structure(bytes)).value()); }

// A structure of that length with bytes at one offset, and a size of 1 GB unless those set it.
std::string told(std::size_t length, std::size_t offset, const OwnedBytes& bytes, const char* name,
                 const Lines& strings = {}) {
  OwnedBytes fields = fieldsWith(length, offset, bytes);
  if (offset != 0x0C) fields[0x0D - 4] = 0x04;
  const OwnedBytes structure = structureBytes(17, fields, strings);
  return valueOf(physicalMemory(Structure(structure)).value(), name);
}

TEST(PhysicalMemory, AModuleIsToldWhole) {
  EXPECT_EQ((Lines{R"(DeviceLocator="P1-A1")", R"(BankLocator="Channel A")", "Populated=true",
                   "Capacity=34359738368", R"(FormFactor="DIMM")", R"(MemoryType="DDR5")",
                   "Speed=4800", R"(Manufacturer="Maker")", R"(PartNumber="part")",
                   R"(SerialNumber="S1")", R"(AssetTag="tag")"}),
            told(structureBytes(17, kFields, kStrings)));
}

TEST(PhysicalMemory, AnEmptySlotHasNoTextsOfAModule) {
  OwnedBytes fields = kFields;
  fields[0x0C - 4] = fields[0x0D - 4] = 0;
  EXPECT_EQ((Lines{R"(DeviceLocator="P1-A1")", R"(BankLocator="Channel A")", "Populated=false",
                   "Capacity=0", R"(FormFactor="DIMM")", R"(MemoryType="DDR5")", "Speed=4800"}),
            told(structureBytes(17, fields, kStrings)));
}

// How many properties the structure has when it ends behind each of its fields.
TEST(PhysicalMemory, TellsWhatItsLengthHas) {
  const std::pair<std::size_t, std::size_t> kCases[] = {
      {0x0E, 2},  {0x0F, 3},  {0x10, 3},  {0x11, 4},  {0x12, 5},  {0x13, 6},  {0x15, 6},
      {0x16, 6},  {0x17, 7},  {0x18, 8},  {0x19, 9},  {0x1A, 10}, {0x1B, 11}, {0x1C, 11},
      {0x20, 11}, {0x22, 11}, {0x28, 11}, {0x54, 11}, {0x5C, 11}};
  for (const auto& [length, properties] : kCases) {
    const auto end = kFields.begin() + static_cast<std::ptrdiff_t>(length - 4);
    const OwnedBytes bytes = structureBytes(17, {kFields.begin(), end}, kStrings);
    EXPECT_EQ(properties, told(bytes).size()) << length;
  }
}

TEST(PhysicalMemory, WithoutASizeNothingIsSaid) {
  for (const std::size_t length : {0x04U, 0x0CU, 0x0DU}) {
    const OwnedBytes bytes = structureBytes(17, OwnedBytes(length - 4, 1), kStrings);
    EXPECT_EQ(std::nullopt, physicalMemory(Structure(bytes))) << length;
  }
}

TEST(PhysicalMemory, SizesOfAModule) {
  const struct {
    const char* what;
    OwnedBytes size;
    const char* capacity;
    const char* populated;
  } kCases[] = {
      {"none", {0x00, 0x00}, "0", "false"},
      {"1 MB", {0x01, 0x00}, "1048576", "true"},
      {"32766 MB", {0xFE, 0x7F}, "34357641216", "true"},
      {"7FFFh without an extended field", {0xFF, 0x7F}, "34358689792", "true"},
      {"1 KB", {0x01, 0x80}, "1024", "true"},
      {"32766 KB", {0xFE, 0xFF}, "33552384", "true"},
      {"0 KB", {0x00, 0x80}, "0", "true"},
      {"unknown", {0xFF, 0xFF}, "nothing", "true"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.capacity, told(0x1C, 0x0C, c.size, "Capacity")) << c.what;
    EXPECT_EQ(c.populated, told(0x1C, 0x0C, c.size, "Populated")) << c.what;
  }
}

TEST(PhysicalMemory, TheExtendedSizeCountsWhereTheSizeSaysSo) {
  const struct {
    const char* what;
    std::size_t length;
    OwnedBytes size;
    OwnedBytes extended;
    const char* capacity;
  } kCases[] = {
      {"32 GB", 0x20, {0xFF, 0x7F}, {0x00, 0x80, 0x00, 0x00}, "34359738368"},
      {"all bits, without the reserved one",
       0x22,
       {0xFF, 0x7F},
       {0xFF, 0xFF, 0xFF, 0xFF},
       "2251799812636672"},
      {"a field cut short", 0x1F, {0xFF, 0x7F}, {0x00, 0x80, 0x00}, "34358689792"},
      {"another size", 0x22, {0x00, 0x10}, {0x00, 0x80, 0x00, 0x00}, "4294967296"},
      {"an unknown one", 0x22, {0xFF, 0xFF}, {0x00, 0x80, 0x00, 0x00}, "nothing"},
  };
  for (const auto& c : kCases) {
    OwnedBytes fields = fieldsWith(c.length, 0x1C, c.extended);
    fields[0x0C - 4] = c.size[0];
    fields[0x0D - 4] = c.size[1];
    const OwnedBytes bytes = structureBytes(17, fields);
    EXPECT_EQ(c.capacity, valueOf(physicalMemory(Structure(bytes)).value(), "Capacity")) << c.what;
  }
}

TEST(PhysicalMemory, SpeedsInMillionsOfTransfers) {
  const struct {
    const char* what;
    std::size_t length;
    OwnedBytes speed;
    OwnedBytes extended;
    const char* expected;
  } kCases[] = {
      {"unknown", 0x5C, {0x00, 0x00}, {1, 0, 0, 0}, "nothing"},
      {"133", 0x1B, {0x85, 0x00}, {}, "133"},
      {"65534", 0x5C, {0xFE, 0xFF}, {1, 0, 0, 0}, "65534"},
      {"70000", 0x5C, {0xFF, 0xFF}, {0x70, 0x11, 0x01, 0x00}, "70000"},
      {"without the reserved bit", 0x58, {0xFF, 0xFF}, {0x70, 0x11, 0x01, 0x80}, "70000"},
      {"an extended one that is unknown", 0x5C, {0xFF, 0xFF}, {0, 0, 0, 0}, "nothing"},
      {"no extended field", 0x54, {0xFF, 0xFF}, {}, "nothing"},
  };
  for (const auto& c : kCases) {
    OwnedBytes fields = fieldsWith(c.length, 0x54, c.extended);
    fields[0x0D - 4] = 0x04;
    fields[0x15 - 4] = c.speed[0];
    fields[0x16 - 4] = c.speed[1];
    const OwnedBytes bytes = structureBytes(17, fields);
    EXPECT_EQ(c.expected, valueOf(physicalMemory(Structure(bytes)).value(), "Speed")) << c.what;
  }
}

TEST(PhysicalMemory, FormsAndTypesAreThoseOfTheStandard) {
  const struct {
    std::size_t offset;
    const char* property;
    unsigned char code;
    const char* name;
  } kCases[] = {
      {0x0E, "FormFactor", 0x00, "nothing"},    {0x0E, "FormFactor", 0x01, R"("Other")"},
      {0x0E, "FormFactor", 0x02, "nothing"},    {0x0E, "FormFactor", 0x03, R"("SIMM")"},
      {0x0E, "FormFactor", 0x09, R"("DIMM")"},  {0x0E, "FormFactor", 0x0D, R"("SODIMM")"},
      {0x0E, "FormFactor", 0x11, R"("CAMM")"},  {0x0E, "FormFactor", 0x12, "nothing"},
      {0x0E, "FormFactor", 0xFF, "nothing"},    {0x12, "MemoryType", 0x00, "nothing"},
      {0x12, "MemoryType", 0x01, R"("Other")"}, {0x12, "MemoryType", 0x02, "nothing"},
      {0x12, "MemoryType", 0x03, R"("DRAM")"},  {0x12, "MemoryType", 0x14, R"("DDR2 FB-DIMM")"},
      {0x12, "MemoryType", 0x15, "nothing"},    {0x12, "MemoryType", 0x17, "nothing"},
      {0x12, "MemoryType", 0x18, R"("DDR3")"},  {0x12, "MemoryType", 0x1A, R"("DDR4")"},
      {0x12, "MemoryType", 0x22, R"("DDR5")"},  {0x12, "MemoryType", 0x24, R"("HBM3")"},
      {0x12, "MemoryType", 0x25, "nothing"},    {0x12, "MemoryType", 0xFF, "nothing"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.name, told(0x15, c.offset, {c.code}, c.property)) << c.property << int{c.code};
  }
}

TEST(PhysicalMemory, AMakersTextCountsBeforeHisCode) {
  const struct {
    const char* what;
    unsigned char number;  // of the text
    Lines strings;
    OwnedBytes id;
    const char* maker;
  } kCases[] = {
      {"a text", 1, {"Words "}, {0x80, 0xCE}, R"("Words")"},
      {"a text that is a code", 1, {"80AD "}, {0x80, 0xCE}, R"("Hyundai Electronics")"},
      {"a text that is nobody's code", 1, {"89FF"}, {0x80, 0xCE}, R"("89FF")"},
      {"no text", 0, {}, {0x80, 0xCE}, R"("Samsung")"},
      {"a text of blanks", 1, {"  "}, {0x80, 0x2C}, R"("Micron Technology")"},
      {"a text that is not there", 2, {"Words"}, {0x80, 0x2C}, R"("Micron Technology")"},
      {"neither", 0, {}, {0x00, 0x00}, "nothing"},
  };
  for (const auto& c : kCases) {
    OwnedBytes fields = fieldsWith(0x2E, 0x2C, c.id);
    fields[0x0D - 4] = 0x04;
    fields[0x17 - 4] = c.number;
    const OwnedBytes bytes = structureBytes(17, fields, c.strings);
    EXPECT_EQ(c.maker, valueOf(physicalMemory(Structure(bytes)).value(), "Manufacturer")) << c.what;
  }
}

// SMBIOS 2.8 ends before the code.
TEST(PhysicalMemory, NoCodeIsReadBehindTheStructure) {
  EXPECT_EQ("nothing", told(0x2D, 0x2C, {0x80}, "Manufacturer", {"\xCE"}));
}

}  // namespace
}  // namespace smbiosinventory
