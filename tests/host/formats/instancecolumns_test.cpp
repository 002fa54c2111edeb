// SPDX-License-Identifier: Apache-2.0
//
// Which properties people are shown, in which order.
#include "host/formats/instancecolumns.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

using Texts = std::vector<std::string>;

struct Sample {
  explicit Sample(std::vector<PublishedInstance> list) : all(std::move(list)) {
    for (const PublishedInstance& instance : all) pointers.push_back(&instance);
  }
  std::vector<PublishedInstance> all;
  InstanceList pointers;
};

PublishedInstance of(const char* className, PropertyList properties) {
  return {className, std::move(properties)};
}

TCIMValue text(const char* value) { return TCIMValue(value); }
TCIMValue node(unsigned number) { return TCIMValue(static_cast<std::uint8_t>(number)); }

// "Name: a|b"
Texts linesOf(const std::vector<PropertyColumn>& columns) {
  Texts lines;
  for (const PropertyColumn& column : columns) {
    std::string line = column.name + ": ";
    for (const std::string& cell : column.cells) {
      line += (&cell == column.cells.data() ? "" : "|") + cell;
    }
    lines.push_back(line);
  }
  return lines;
}

Texts linesOf(const InstanceDigest& digest) {
  Texts lines = linesOf(digest.columns);
  for (const auto& [name, value] : digest.common) lines.push_back("all: " + name + ' ' + value);
  return lines;
}

Texts digestLines(const Sample& sample) {
  return linesOf(digestOf(sample.all.front().className, sample.pointers));
}

TEST(InstanceColumns, WhatSaysMostComesFirst) {
  const Sample sample(
      {of(kBios, {{"SourceNode", node(1)},
                  {"SoftwareElementState", TCIMValue(std::uint16_t{3})},
                  {"LoadedEndingAddress", TCIMValue(std::uint64_t{255})},
                  {"FileName", text(" ")},
                  {"ReleaseDate", TCIMValue(TCIMDateTime("20070315000000.000000+000"))},
                  {"Manufacturer", text("KRX")},
                  {"SerialNumber", text("S1")},
                  {"BuildNumber", text("B1")},
                  {"Version", text("108")},
                  {"Name", text("UEFI")}})});
  const Texts expected{"Name: UEFI",
                       "Version: 108",
                       "BuildNumber: B1",
                       "SerialNumber: S1",
                       "Manufacturer: KRX",
                       "ReleaseDate: 2007-03-15",
                       "LoadedEndingAddress: 0xFF",
                       "SourceNode: 1",
                       "SoftwareElementState: Running"};
  EXPECT_EQ(expected, linesOf(allColumns(kBios, sample.pointers)));
}

// Of the part numbers of FRU devices the one that most of them have; a name that the schema lacks and
// a class that it lacks are taken as they come.
TEST(InstanceColumns, OneOfEachKindComesFirst) {
  const Sample fru(
      {of("KRXSG_IPMIFRU", {{"FRUDeviceID", node(0)},
                            {"BoardPartNumber", text("B0")},
                            {"ProductPartNumber", text("P0")},
                            {"Name", text("BMC")}}),
       of("KRXSG_IPMIFRU",
          {{"FRUDeviceID", node(1)}, {"ProductPartNumber", text("P1")}, {"Name", text("PSU")}})});
  EXPECT_EQ(Texts({"Name: BMC|PSU", "FRUDeviceID: 0|1", "ProductPartNumber: P0|P1",
                   "BoardPartNumber: B0|"}),
            linesOf(allColumns("KRXSG_IPMIFRU", fru.pointers)));
  const Sample foreign({of("OTHER_Fan", {{"Speed", node(9)}, {"FanSerialNumber", text("F")}})});
  EXPECT_EQ(Texts({"FanSerialNumber: F", "Speed: 9"}),
            linesOf(allColumns("OTHER_Fan", foreign.pointers)));
}

TEST(InstanceDigest, LeavesOutWhatSaysNothing) {
  const Sample sample({of(kBios, {{"Name", text("Node 1 : UEFI")},
                                  {"Version", text("108")},
                                  {"SourceNode", node(1)},
                                  {"SoftwareElementID", text("SP Firmware VPD Collector")},
                                  {"SoftwareElementState", TCIMValue(std::uint16_t{3})},
                                  {"Manufacturer", text("KRX")},
                                  {"SerialNumber", text("S1")},
                                  {"UniqueID", text("S1")}}),
                       of(kBios, {{"Name", text("Node 2 : UEFI")},
                                  {"Version", text("108")},
                                  {"SourceNode", node(2)},
                                  {"SoftwareElementID", text("SP Firmware VPD Collector")},
                                  {"Manufacturer", text("KRX")},
                                  {"SerialNumber", text("S2")},
                                  {"UniqueID", text("S2")}})});
  EXPECT_EQ(
      Texts({"Version: 108|108", "SerialNumber: S1|S2", "all: Name UEFI", "all: Manufacturer KRX"}),
      digestLines(sample));
  EXPECT_EQ(Texts({"1", "2"}), digestOf(kBios, sample.pointers).nodes);
}

// A level may be the node's number by chance.
TEST(InstanceDigest, ALevelIsNeverLeftOut) {
  const char* const revision = "KRXSG_HardwareRevisionLevel";
  const Sample sample({of(revision, {{"Name", text("Node 1 : ")},
                                     {"SourceNode", node(1)},
                                     {"SoftwareElementID", text("1")},
                                     {"Version", text("1")},
                                     {"Hardwarelevel", text("1")}}),
                       of(revision, {{"Name", text("Node 2 : ")},
                                     {"SourceNode", node(2)},
                                     {"SoftwareElementID", text("2")},
                                     {"Version", text("2")},
                                     {"Hardwarelevel", text("2")}})});
  EXPECT_EQ(Texts({"Version: 1|2"}), digestLines(sample));
}

TEST(InstanceDigest, KeysComeForwardWhereNamesAreNotEnough) {
  const auto backplane = [](const char* slot, const char* part) {
    return of("KRXSG_Vpd", {{"Name", text("Node 1: DASD BackPlane")},
                            {"PartNumber", text(part)},
                            {"SlotNumber", text(slot)}});
  };
  EXPECT_EQ(Texts({"Name: DASD BackPlane|DASD BackPlane", "SlotNumber: 1|2", "PartNumber: P|Q"}),
            digestLines(Sample({backplane("1", "P"), backplane("2", "Q")})));
  const Sample alike({backplane("1", "P"), backplane("1", "Q")});
  EXPECT_EQ(Texts({"Name: DASD BackPlane|DASD BackPlane", "PartNumber: P|Q", "all: SlotNumber 1"}),
            digestLines(alike));
}

TEST(InstanceDigest, OnlyTheLabelOfTheOwnNodeIsTakenOff) {
  const struct {
    const char* location;
    const char* shown;
  } cases[] = {
      {"Node 2", ""},         {"Node 2: ", ""},           {"Node 2: A", "A"},
      {"Node 2 : A", "A"},    {"Node 3: A", "Node 3: A"}, {"Node 22: A", "Node 22: A"},
      {"Node 2A", "Node 2A"}, {"Node 2 A", "Node 2 A"},   {"A", "A"},
  };
  for (const auto& c : cases) {
    const Sample sample(
        {of("KRXSG_Vpd", {{"Name", text("Node 2: DIMM 1")}, {"Location", text(c.location)}})});
    Texts expected{"Name: DIMM 1"};
    if (*c.shown != '\0') expected.push_back("Location: " + std::string(c.shown));
    EXPECT_EQ(expected, digestLines(sample)) << c.location;
  }
}

TEST(InstanceDigest, LongAndHostileTextsAreOneShortLine) {
  const std::string huge(10'000'000, '\x1B');
  const Sample sample({of("KRXSG_Vpd", {{"PartNumber", TCIMValue(huge)}})});
  const InstanceDigest digest = digestOf("KRXSG_Vpd", sample.pointers);
  EXPECT_EQ(1000U, digest.columns.front().cells.front().size());
  EXPECT_EQ(std::string::npos, digest.columns.front().cells.front().find('\x1B'));
}

TEST(InstanceDigest, InstancesThatSayNothingHaveNoColumns) {
  const Sample sample({of("KRXSG_Vpd", {}), of("KRXSG_Vpd", {{"Name", text("  ")}})});
  EXPECT_EQ(Texts(), digestLines(sample));
  EXPECT_EQ(2U, digestOf("KRXSG_Vpd", sample.pointers).nodes.size());
}

}  // namespace
}  // namespace velhost
