// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/fruinventory.h"

#include <gtest/gtest.h>

#include "scriptedbmc.h"

namespace ipmiinventory {
namespace {

using Lines = std::vector<std::string>;

FruLocator located(std::uint8_t id) {
  FruLocator locator;
  locator.fruDeviceId = id;
  return locator;
}

// "ID: NAME=TEXT NAME=TEXT | NOTES", a device a line.
Lines read(std::vector<Exchange> exchanges, const std::vector<FruLocator>& locators) {
  ScriptedBmc bmc(std::move(exchanges));
  Lines lines;
  for (const Fru& fru : readFrus(bmc, locators)) {
    std::string& line = lines.emplace_back(std::to_string(fru.locator.fruDeviceId) + ":");
    for (const FruProperty& property : fru.properties) {
      line += std::string(" ") + property.name + "=" + property.text;
    }
    if (!fru.notes.empty()) line += " | " + fru.notes;
  }
  return lines;
}

// Version, two areas, pad, checksum: board at 8, product at 24. The device has 48 bytes.
const Exchange kSize{"0A 10 00", "00 30 00 00"};
const Exchange kHeader{"0A 11 00 00 00 08", "00 08 01 00 00 01 03 00 00 FB"};
// Manufacturer "BB"; 1 minute; checksum.
const Exchange kBoard{"0A 11 00 08 00 10", "00 10 01 02 00 01 00 00 C2 42 42 C1 00 00 00 00 00 F5"};
// Manufacturer "PP"; 8 more bytes up to the device's end.
const Exchange kProduct{"0A 11 00 18 00 18",
                        "00 18 01 01 00 C2 50 50 C1 DB FF FF FF FF FF FF FF FF"
                        " FF FF FF FF FF FF FF FF"};
constexpr char kBoardText[] = "BoardManufacturer=BB BoardManufactureDate=19960101000100.000000+000";

TEST(FruInventory, EachAreaIsReadOnce) {
  EXPECT_EQ(Lines{"0: " + std::string(kBoardText) + " ProductManufacturer=PP"},
            read({kSize, kHeader, kBoard, kProduct}, {located(0)}));
}

TEST(FruInventory, Device0IsLookedForWhereNoneLocatesIt) {
  EXPECT_EQ((Lines{"0:", "7: | FRU device: not there (completion code CBh)"}),
            read({{"0A 10 00", "00 30 00 00"},
                  {"0A 11 00 00 00 08", "00 08 01 00 00 00 00 00 00 FF"},
                  {"0A 10 07", "CB"}},
                 {located(7)}));
}

TEST(FruInventory, Device0ThatNobodyLocatesAndIsNotThereIsNone) {
  EXPECT_EQ(Lines{}, read({{"0A 10 00", "CB"}}, {}));
  EXPECT_EQ(Lines{}, read({{"0A 10 00", ""}}, {}));
  EXPECT_EQ((Lines{"0: | FRU device: not there (completion code CBh)"}),
            read({{"0A 10 00", "CB"}}, {located(0)}));
  EXPECT_EQ((Lines{"0: | FRU device: the device has no room for FRU areas"}),
            read({{"0A 10 00", "00 04 00 00"}}, {}));
}

TEST(FruInventory, AWrongHeaderCostsTheDevice) {
  EXPECT_EQ((Lines{"0: | common header: wrong checksum", "1: | common header: blank",
                   "2: | common header: busy (completion code 81h)"}),
            read({{"0A 10 00", "00 30 00 00"},
                  {"0A 11 00 00 00 08", "00 08 01 00 00 01 03 00 00 FA"},
                  {"0A 10 01", "00 30 00 00"},
                  {"0A 11 01 00 00 08", "00 08 FF FF FF FF FF FF FF FF"},
                  {"0A 10 02", "00 30 00 00"},
                  {"0A 11 02 00 00 08", "81"}},
                 {located(0), located(1), located(2)}));
}

TEST(FruInventory, AWrongAreaCostsThatArea) {
  const struct {
    const char* board;
    const char* notes;
  } kCases[] = {
      {"C9", "board area: cannot be read (completion code C9h)"},
      {"00 10 01 02 00 01 00 00 C2 42 42 C1 00 00 00 00 00 F6", "board area: wrong checksum"},
      {"00 10 03 02 00 01 00 00 C2 42 42 C1 00 00 00 00 00 F3",
       "board area: version 3 is not known"},
      {"00 10 01 06 00 01 00 00 C2 42 42 C1 00 00 00 00 00 F1",
       "board area: its length reaches past the device's end"},
      {"00 10 01 00 00 01 00 00 C2 42 42 C1 00 00 00 00 00 F7", "board area: its length is 0"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Lines{"0: ProductManufacturer=PP | " + std::string(c.notes)},
              read({kSize, kHeader, {kBoard.request, c.board}, kProduct}, {located(0)}));
  }
}

TEST(FruInventory, ASilentBmcIsToldOfEachArea) {
  EXPECT_EQ(
      Lines{"0: | board area: the BMC does not answer; product area: the BMC does not answer"},
      read({kSize, kHeader, {kBoard.request, ""}, {kProduct.request, ""}}, {located(0)}));
}

// It reaches into the product area, whose bytes are read once more.
TEST(FruInventory, AnAreaLongerThanTheNextOnesStartIsReadByItsLength) {
  EXPECT_EQ(Lines{"0: BoardManufacturer=BB ProductManufacturer=PP"},
            read({kSize,
                  kHeader,
                  {kBoard.request, "00 10 01 03 00 00 00 00 C2 42 42 C1 00 00 00 00 00 00"},
                  {"0A 11 00 18 00 08", "00 08 00 00 00 00 00 00 00 F5"},
                  kProduct},
                 {located(0)}));
}

// A device so large that the end of the last area is not known: its length comes first.
TEST(FruInventory, TheLastAreaIsReadByItsLength) {
  EXPECT_EQ(Lines{"0: ProductManufacturer=PP"},
            read({{"0A 10 00", "00 00 08 00"},
                  {"0A 11 00 00 00 08", "00 08 01 00 00 00 01 00 00 FE"},
                  {"0A 11 00 08 00 08", "00 08 01 02 00 C2 50 50 C1 00"},
                  {"0A 11 00 10 00 08", "00 08 00 00 00 00 00 00 00 DA"}},
                 {located(0)}));
}

TEST(FruInventory, AnAreaBehindTheDevicesEndIsNotRead) {
  EXPECT_EQ(
      Lines{"0: | product area: it begins past the device's end"},
      read({{"0A 10 00", "00 30 00 00"}, {"0A 11 00 00 00 08", "00 08 01 00 00 00 06 00 00 F9"}},
           {located(0)}));
}

TEST(FruInventory, OtherContentsAreNotRead) {
  FruLocator spd = located(4);
  spd.otherContents = "memory module's SPD data";
  EXPECT_EQ(Lines{"4: | FRU device: holds a memory module's SPD data, not read"},
            read({{"0A 10 00", "CB"}}, {spd}));
}

TEST(FruInventory, DevicesAreAskedAtTheirLun) {
  FruLocator other = located(1);
  other.lun = 1;
  EXPECT_EQ(Lines{"1: | FRU device: not there (completion code CBh)"},
            read({{"0A 10 00", "CB"}, {"1: 0A 10 01", "CB"}}, {other}));
}

}  // namespace
}  // namespace ipmiinventory
