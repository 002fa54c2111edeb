// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/computersystem.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "structurebytes.h"

namespace smbiosinventory {
namespace {

using Lines = std::vector<std::string>;

Lines told(void (*add)(const Structure&, Record&), const OwnedBytes& bytes) {
  Record record;
  add(Structure(bytes), record);
  return shown(record);
}

const OwnedBytes kUuid = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                          0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

// Maker, product, version and serial number, the identifier, how it woke up, SKU number, family.
OwnedBytes systemFields(const OwnedBytes& uuid) {
  OwnedBytes fields = {1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 6, 5, 6};
  std::ranges::copy(uuid, fields.begin() + 4);
  return fields;
}

const Lines kNames = {"Maker ", "Product", "V 1  ", "S1", "SKU", "Family"};

TEST(ComputerSystem, TellsOfTheSystem) {
  EXPECT_EQ((Lines{R"(Manufacturer="Maker")", R"(ProductName="Product")", R"(Version="V 1")",
                   R"(SerialNumber="S1")", R"(UUID="00112233-4455-6677-8899-aabbccddeeff")",
                   R"(SKUNumber="SKU")", R"(Family="Family")"}),
            told(addSystem, structureBytes(1, systemFields(kUuid), kNames)));
}

// SMBIOS 2.0, 2.1 and 2.4.
TEST(ComputerSystem, TellsWhatTheLengthHas) {
  const std::pair<std::size_t, std::size_t> kCases[] = {{4, 4}, {19, 4}, {20, 5}, {21, 5}, {22, 6}};
  for (const auto& [size, properties] : kCases) {
    OwnedBytes fields = systemFields(kUuid);
    fields.resize(size);
    EXPECT_EQ(properties, told(addSystem, structureBytes(1, fields, kNames)).size()) << size;
  }
}

TEST(ComputerSystem, AnIdentifierOfZerosOrOnesIsNone) {
  const OwnedBytes zeros(16, 0x00);
  OwnedBytes nearly = zeros;
  nearly.back() = 1;
  const std::pair<OwnedBytes, const char*> kCases[] = {
      {zeros, "nothing"},
      {OwnedBytes(16, 0xFF), "nothing"},
      {nearly, R"("00000000-0000-0000-0000-000000000001")"}};
  for (const auto& [uuid, text] : kCases) {
    const OwnedBytes bytes = structureBytes(1, systemFields(uuid));
    Record record;
    addSystem(Structure(bytes), record);
    EXPECT_EQ(text, valueOf(record, "UUID"));
  }
}

TEST(ComputerSystem, TellsOfChassisAndBoard) {
  EXPECT_EQ((Lines{R"(ChassisType="Rack Mount Chassis")", R"(ChassisSerialNumber="C1")",
                   R"(ChassisAssetTag="tag")"}),
            told(addChassis, structureBytes(3, {0, 0x17, 0, 1, 2}, {"C1", "tag "})));
  EXPECT_EQ((Lines{R"(BoardManufacturer="Maker")", R"(BoardProduct="Board")",
                   R"(BoardSerialNumber="B1")"}),
            told(addBoard, structureBytes(2, {1, 2, 0, 3}, {"Maker", "Board", "B1"})));
}

TEST(ComputerSystem, ChassisTypesAreThoseOfTheStandard) {
  const std::pair<unsigned char, const char*> kCases[] = {
      {0x00, "nothing"},
      {0x01, R"("Other")"},
      {0x02, "nothing"},
      {0x03, R"("Desktop")"},
      {0x0A, R"("Notebook")"},
      {0x11, R"("Main Server Chassis")"},
      {0x1C, R"("Blade")"},
      {0x1D, R"("Blade Enclosure")"},
      {0x24, R"("Stick PC")"},
      {0x25, "nothing"},
      {0x7F, "nothing"},
      {0x80, "nothing"},
      {0x97, R"("Rack Mount Chassis")"},  // with a lock
      {0xFF, "nothing"}};
  for (const auto& [code, name] : kCases) {
    const OwnedBytes bytes = structureBytes(3, {0, code});
    Record record;
    addChassis(Structure(bytes), record);
    EXPECT_EQ(name, valueOf(record, "ChassisType")) << int{code};
  }
}

TEST(ComputerSystem, AMotherboardSaysSo) {
  const std::pair<OwnedBytes, bool> kCases[] = {
      {fieldsWith(0x0E, 0x0D, {0x0A}), true},
      {fieldsWith(0x0E, 0x0D, {0x03}), false},
      {OwnedBytes(4, 0x0A), false},  // SMBIOS 2.0: no board type
  };
  for (const auto& [fields, isMain] : kCases) {
    const OwnedBytes bytes = structureBytes(2, fields);
    EXPECT_EQ(isMain, isMotherboard(Structure(bytes)));
  }
}

}  // namespace
}  // namespace smbiosinventory
