// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/fruarea.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ipmibytes.h"

namespace ipmiinventory {

std::ostream& operator<<(std::ostream& out, const FruProperty& property) {
  return out << property.name << '=' << property.text;
}

namespace {

const FruAreaLayout& layout(std::string_view name) {
  return *std::ranges::find(fruAreaLayouts(), name, &FruAreaLayout::name);
}

// "NAME=TEXT", a property a line.
std::vector<std::string> described(const FruAreaContent& content) {
  std::vector<std::string> lines;
  for (const FruProperty& property : content.properties) {
    lines.push_back(std::string(property.name) + '=' + property.text);
  }
  return lines;
}

using Lines = std::vector<std::string>;

TEST(FruArea, ChassisHasItsTypeAndTwoFields) {
  // version, 3 units, 17h: rack mount; part number "C-1", serial number BCD plus, a custom field
  const Bytes area = checked(hex("01 03 17 C3 43 2D 31 42 12 3A 02 AA BB C1") + hex("00 00"));
  const FruAreaContent content = decodeArea(layout("chassis area"), area);
  EXPECT_EQ("", content.fault);
  EXPECT_EQ(
      (Lines{"ChassisType=Rack Mount Chassis", "ChassisPartNumber=C-1", "ChassisSerialNumber=123"}),
      described(content));
}

TEST(FruArea, BoardHasADateBehindItsFields) {
  // version, 5 units, English; 527040 minutes are the 366 days of 1996
  const Bytes area =
      checked(hex("01 05 19 C0 0A 08 C2") + "KR" + hex("C4") + "Main" + hex("83 29 DC A6") +
              hex("01 7F") + hex("C4") + "File" + hex("C6") + "custom" + hex("C1"));
  const FruAreaContent content = decodeArea(layout("board area"), area);
  EXPECT_EQ("", content.fault);
  EXPECT_EQ((Lines{"BoardManufacturer=KR", "BoardProductName=Main", "BoardSerialNumber=IPMI",
                   "BoardPartNumber=7F", "BoardManufactureDate=19970101000000.000000+000"}),
            described(content));
}

TEST(FruArea, ProductHasSixFields) {
  const Bytes area =
      checked(hex("01 04 00 C2") + "MM" + hex("C2") + "NN" + hex("C2") + "PP" + hex("C2") + "VV" +
              hex("C2") + "SS" + hex("C2") + "AA" + hex("C2") + "FF" + hex("C1") + hex("00"));
  const FruAreaContent content = decodeArea(layout("product area"), area);
  EXPECT_EQ("", content.fault);
  EXPECT_EQ((Lines{"ProductManufacturer=MM", "ProductName=NN", "ProductPartNumber=PP",
                   "ProductVersion=VV", "ProductSerialNumber=SS", "ProductAssetTag=AA"}),
            described(content));
}

TEST(FruArea, EmptyFieldsAndNoDateAreNotSet) {
  const Bytes board = checked(hex("01 02 00 00 00 00 C0 00 C2 20 20 C1") + hex("00 00 00"));
  EXPECT_EQ(Lines{}, described(decodeArea(layout("board area"), board)));
  const Bytes chassis = checked(hex("01 01 00 C0 00 C1"));
  EXPECT_EQ(Lines{}, described(decodeArea(layout("chassis area"), chassis)));
}

TEST(FruArea, TextsAreInTheAreasLanguage) {
  const struct {
    const char* name;
    const char* start;
    const char* property;
  } kCases[] = {
      {"product area", "01 01 00", "ProductManufacturer=AB"},
      {"product area", "01 01 19", "ProductManufacturer=AB"},
      {"product area", "01 01 01", "ProductManufacturer=\xE4\x89\x81"},
      {"product area", "01 01 18", "ProductManufacturer=\xE4\x89\x81"},
      {"chassis area", "01 01 00", "ChassisPartNumber=AB"},
      {"chassis area", "01 01 7F", "ChassisPartNumber=AB"},  // a chassis type, and one of no name
  };
  for (const auto& c : kCases) {
    const Bytes area = checked(hex(c.start) + hex("C2 41 42 C1"));
    EXPECT_EQ(Lines{c.property}, described(decodeArea(layout(c.name), area))) << c.start;
  }
}

TEST(FruArea, AWrongAreaHasNoProperties) {
  const Bytes good = checked(hex("01 01 00 C2 41 42 C1"));
  const auto with = [&](std::size_t place, std::uint8_t value) {
    Bytes bytes = good;
    bytes[place] = value;
    return bytes;
  };
  const struct {
    const char* what;
    Bytes area;
    const char* fault;
  } kCases[] = {
      {"nothing", {}, "too short"},
      {"one byte", hex("01"), "too short"},
      {"version 0", with(0, 0x00), "version 0 is not known"},
      {"version 2", with(0, 0xF2), "version 2 is not known"},
      {"no length", with(1, 0x00), "its length is 0"},
      {"a unit too long", with(1, 0x02), "its length reaches past the device's end"},
      {"a byte lost", {good.begin(), good.end() - 1}, "its length reaches past the device's end"},
      {"a wrong checksum", with(7, static_cast<std::uint8_t>(good[7] + 1)), "wrong checksum"},
      {"a wrong byte", with(4, 0x51), "wrong checksum"},
  };
  for (const auto& c : kCases) {
    const FruAreaContent content = decodeArea(layout("product area"), c.area);
    EXPECT_EQ(c.fault, content.fault) << c.what;
    EXPECT_EQ(Lines{}, described(content)) << c.what;
  }
}

TEST(FruArea, FieldsBeforeAWrongOneAreKept) {
  const struct {
    const char* what;
    const char* bytes;
    const char* fault;
  } kCases[] = {
      {"a field that reaches to the checksum", "01 01 00 C2 41 42 00",
       "its fields have no end mark"},
      {"one that reaches past it", "01 01 00 C2 41 42 C2", "field 2 reaches past its end"},
      {"the first one", "01 01 00 C4 41 42 43", "field 1 reaches past its end"},
  };
  const Lines kKept[] = {{"ProductManufacturer=AB"}, {"ProductManufacturer=AB"}, {}};
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const FruAreaContent content =
        decodeArea(layout("product area"), checked(hex(kCases[i].bytes)));
    EXPECT_EQ(kCases[i].fault, content.fault) << kCases[i].what;
    EXPECT_EQ(kKept[i], described(content)) << kCases[i].what;
  }
}

// The rest of the device, read in one go with the area.
TEST(FruArea, BytesBehindItDoNotCount) {
  const Bytes area = checked(hex("01 01 00 C2 41 42 C1")) + hex("55 66");
  const FruAreaContent content = decodeArea(layout("product area"), area);
  EXPECT_EQ("", content.fault);
  EXPECT_EQ(Lines{"ProductManufacturer=AB"}, described(content));
}

TEST(FruArea, AStartTellsTheLength) {
  EXPECT_EQ(0U, areaLength(hex("")));
  EXPECT_EQ(0U, areaLength(hex("01")));
  EXPECT_EQ(2040U, areaLength(hex("01 FF")));
  EXPECT_EQ("", areaStartFault(hex("01 02"), 16));
  EXPECT_EQ("its length reaches past the device's end", areaStartFault(hex("01 02"), 15));
}

TEST(FruArea, DatesCountMinutesFrom1996) {
  const struct {
    std::uint32_t minutes;
    const char* date;
  } kCases[] = {
      {0, ""},
      {1, "19960101000100.000000+000"},
      {1439, "19960101235900.000000+000"},
      {59 * 1440, "19960229000000.000000+000"},
      // date -u -d '1996-01-01 UTC + 16777215 minutes'
      {0xFFFFFF, "20271124201500.000000+000"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.date, fruDate(c.minutes)) << c.minutes;
}

}  // namespace
}  // namespace ipmiinventory
