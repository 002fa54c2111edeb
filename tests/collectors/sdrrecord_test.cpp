// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/sdrrecord.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"

namespace ipmiinventory {
namespace {

// Record ID, version, type, length; address, FRU device ID, access, channel, reserved, device type and
// modifier, entity ID and instance, OEM, "PSU 1".
constexpr char kFruLocator[] = "34 12 51 11 10 20 05 80 00 00 10 02 0A 01 00 C5 50 53 55 20 31";

// ... address, channel, power states, capabilities, three reserved, entity ID and instance, OEM, "BMC".
constexpr char kControllerLocator[] = "02 00 51 12 0E 20 00 00 BF 00 00 00 07 01 00 C3 42 4D 43";

Bytes with(const char* record, std::size_t place, std::uint8_t value) {
  Bytes bytes = hex(record);
  bytes[place] = value;
  return bytes;
}

TEST(SdrRecord, HeaderSaysWhatFollows) {
  const auto fru = parseSdrHeader(hex("34 12 51 11 10"));
  ASSERT_TRUE(fru);
  EXPECT_EQ(0x1234, fru->recordId);
  EXPECT_TRUE(fru->isLocator);
  EXPECT_EQ(21U, fru->length);
  EXPECT_TRUE(parseSdrHeader(hex("34 12 51 12 FF"))->isLocator);
  EXPECT_EQ(260U, parseSdrHeader(hex("34 12 51 12 FF"))->length);
  EXPECT_FALSE(parseSdrHeader(hex("34 12 51 01 30"))->isLocator);
  EXPECT_FALSE(parseSdrHeader(hex("34 12 51 11")));
}

TEST(SdrRecord, FruDeviceIsLocated) {
  const auto locator = parseFruLocator(hex(kFruLocator));
  ASSERT_TRUE(locator);
  EXPECT_EQ(5, locator->fruDeviceId);
  EXPECT_EQ(0, locator->lun);
  EXPECT_EQ("PSU 1", locator->name);
  EXPECT_EQ(10, locator->entityId);
  EXPECT_EQ(1, locator->entityInstance);
  EXPECT_EQ(nullptr, locator->otherContents);
}

TEST(SdrRecord, ControllerWithFruInformationIsDevice0) {
  const auto locator = parseFruLocator(hex(kControllerLocator));
  ASSERT_TRUE(locator);
  EXPECT_EQ(0, locator->fruDeviceId);
  EXPECT_EQ(0, locator->lun);
  EXPECT_EQ("BMC", locator->name);
  EXPECT_EQ(7, locator->entityId);
  EXPECT_EQ(1, locator->entityInstance);
}

TEST(SdrRecord, WhatTheBmcDoesNotReadIsNotLocated) {
  const struct {
    const char* what;
    Bytes record;
  } kCases[] = {
      {"nothing", {}},
      {"a sensor", with(kFruLocator, 3, 0x01)},
      {"behind another controller", with(kFruLocator, 5, 0xC0)},
      {"on the IPMB itself", with(kFruLocator, 5, 0x00)},
      {"on a bus of the BMC's", with(kFruLocator, 7, 0x01)},
      {"another controller", with(kControllerLocator, 5, 0x2C)},
      {"a controller without FRU information", with(kControllerLocator, 8, 0xF7)},
      {"a byte short", Bytes(15)},
  };
  for (const auto& c : kCases) EXPECT_FALSE(parseFruLocator(c.record)) << c.what;
  EXPECT_TRUE(parseFruLocator(with(kFruLocator, 5, 0x21)));  // bit 0 is reserved
}

TEST(SdrRecord, DeviceIsAskedAtItsLun) {
  EXPECT_EQ(3, parseFruLocator(with(kFruLocator, 7, 0x98))->lun);
  EXPECT_EQ(1, parseFruLocator(with(kFruLocator, 7, 0xEF))->lun);
}

TEST(SdrRecord, EntityThatIsUnspecifiedIsNotKnown) {
  const auto locator = parseFruLocator(with(kFruLocator, 12, 0));
  EXPECT_FALSE(locator->entityId);
  EXPECT_FALSE(locator->entityInstance);
}

TEST(SdrRecord, DevicesOfOtherContentsAreToldByTheirType) {
  const struct {
    std::uint8_t type;
    std::uint8_t modifier;
    const char* contents;
  } kCases[] = {
      {0x10, 0x00, nullptr},
      {0x10, 0x01, "memory module's SPD data"},
      {0x10, 0x02, nullptr},
      {0x10, 0x03, "processor's information ROM"},
      {0x08, 0x01, "memory module's SPD data"},
      {0x07, 0x01, nullptr},
      {0x11, 0x01, nullptr},
      {0x10, 0xFF, nullptr},
  };
  for (const auto& c : kCases) {
    Bytes record = with(kFruLocator, 10, c.type);
    record[11] = c.modifier;
    EXPECT_STREQ(c.contents, parseFruLocator(record)->otherContents) << int{c.type};
  }
}

TEST(SdrRecord, NameIsATextOfItsEncoding) {
  const struct {
    const char* what;
    const char* name;
    const char* text;
  } kCases[] = {
      {"none", "C0", ""},
      {"Latin-1", "C3 46 61 6E", "Fan"},
      {"longer than the record", "DF 46 61 6E", "Fan"},
      {"shorter than the record", "C2 46 61 6E", "Fa"},
      {"bit 5 is reserved", "E3 46 61 6E", "Fan"},
      {"six-bit", "83 29 DC A6", "IPMI"},
      {"BCD plus", "42 1B 23", "1-23"},
      {"Unicode", "04 46 00 AC 20", "F\xE2\x82\xAC"},
  };
  for (const auto& c : kCases) {
    Bytes record = hex(kFruLocator);
    record.resize(15);
    EXPECT_EQ(c.text, parseFruLocator(record + hex(c.name))->name) << c.what;
  }
}

// IPMI 2.0, table 43-13: those below 38h, of which 00h is no entity and 36h reserved.
TEST(SdrRecord, EntitiesHaveNames) {
  // clang-format off
  const char* const kNames[] = {
      /* 00h */ "", "Other", "Unknown", "Processor", "Disk or disk bay", "Peripheral bay",
                "System management module", "System board",
      /* 08h */ "Memory module", "Processor module", "Power supply", "Add-in card",
                "Front panel board", "Back panel board", "Power system board", "Drive backplane",
      /* 10h */ "System internal expansion board", "Other system board", "Processor board",
                "Power unit", "Power module", "Power management board",
                "Chassis back panel board", "System chassis",
      /* 18h */ "Sub-chassis", "Other chassis board", "Disk drive bay", "Peripheral bay",
                "Device bay", "Fan", "Cooling unit", "Cable or interconnect",
      /* 20h */ "Memory device", "System management software", "System firmware",
                "Operating system", "System bus", "Group",
                "Remote management communication device", "External environment",
      /* 28h */ "Battery", "Processing blade", "Connectivity switch",
                "Processor and memory module", "I/O module", "Processor and I/O module",
                "Management controller firmware", "IPMI channel",
      /* 30h */ "PCI bus", "PCI Express bus", "SCSI bus", "SATA or SAS bus",
                "Processor front-side bus", "Real-time clock", "", "Air inlet",
  };
  // clang-format on
  ASSERT_EQ(0x38U, std::size(kNames));
  for (unsigned id = 0; id < 256; ++id) {
    EXPECT_EQ(id < 0x38 ? kNames[id] : "", entityName(static_cast<std::uint8_t>(id))) << id;
  }
}

}  // namespace
}  // namespace ipmiinventory
