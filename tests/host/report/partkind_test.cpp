// SPDX-License-Identifier: Apache-2.0
#include "host/report/partkind.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

PublishedInstance named(const char* className, const char* name) {
  return {className, {{"Name", TCIMValue(name)}}};
}

PublishedInstance unit(std::uint8_t entity) {
  return {"KRXSG_IPMIFRU", {{"EntityID", TCIMValue(entity)}}};
}

TEST(PartKind, EachKindHasItsPlace) {
  const struct {
    const char* what;
    PublishedInstance instance;
    Place place;
  } cases[] = {
      {"machine", named("KRXSG_ComputerSystem", "System"), Place::kMachine},
      {"SP firmware", named("KRXSG_SPROMFirmwareVPDMain", "x"), Place::kServiceProcessor},
      {"BMC", named("KRXSG_ManagementController", "BMC"), Place::kServiceProcessor},
      {"BIOS", named("KRXSG_SystemBIOSElement", "UEFI"), Place::kFirmware},
      {"cKVM", {"KRXSG_cKVM", {}}, Place::kFirmware},
      {"DIMM", named("KRXSG_Vpd", "Node 2: DIMM 7"), Place::kMemory},
      {"power supply", named("KRXSG_Vpd", "Power Supply 1"), Place::kPower},
      {"power backplane", named("KRXSG_Vpd", "Power BackPlane"), Place::kBackplanes},
      {"backplane for disks", named("KRXSG_Vpd", "Node 1: DASD BackPlane"), Place::kBackplanes},
      {"processor card", named("KRXSG_Vpd", "Processor Card"), Place::kBoards},
      {"planar", named("KRXSG_Vpd", "Planar"), Place::kBoards},
      {"component of no known kind", named("KRXSG_Vpd", "Fan 1"), Place::kOther},
      {"SMBIOS' memory", {"KRXSG_PhysicalMemory", {}}, Place::kMemory},
      {"FRU: memory module", unit(8), Place::kMemory},
      {"FRU: memory device", unit(32), Place::kMemory},
      {"FRU: power supply", unit(10), Place::kPower},
      {"FRU: power unit", unit(19), Place::kPower},
      {"FRU: power module", unit(20), Place::kPower},
      {"FRU: front panel board", unit(12), Place::kBoards},
      {"FRU: back panel board", unit(13), Place::kBackplanes},
      {"FRU: drive backplane", unit(15), Place::kBackplanes},
      {"FRU: chassis back panel board", unit(22), Place::kBackplanes},
      {"FRU: disk", unit(4), Place::kDevices},
      {"FRU: disk drive bay", unit(26), Place::kDevices},
      {"FRU: system board", unit(7), Place::kBoards},
      {"FRU: kind 80 is not kind 8", unit(80), Place::kBoards},
      {"FRU: no kind", {"KRXSG_IPMIFRU", {}}, Place::kBoards},
      {"device", {"KRXSG_USBDevice", {}}, Place::kDevices},
      {"class without levels", {"KRXSG_QLA_ComputerSystem", {}}, Place::kOther},
      {"class that the schema does not have", {"MINE_Fan", {}}, Place::kOther},
  };
  for (const auto& c : cases)
    EXPECT_EQ(placeName(c.place), placeName(placeOf(c.instance))) << c.what;
}

TEST(PartKind, AClassHasAPlaceWhereAllItsKindsHaveIt) {
  const struct {
    const char* className;
    Place place;
  } cases[] = {
      {"KRXSG_Vpd", Place::kOther},
      {"KRXSG_IPMIFRU", Place::kOther},
      {"KRXSG_PhysicalMemory", Place::kMemory},
      {"KRXSG_HardwareRevisionLevel", Place::kServiceProcessor},
      {"KRXSG_DeviceDriver", Place::kFirmware},
      {"KRXSG_QLA_ComputerSystem", Place::kOther},
      {"MINE_Fan", Place::kOther},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(placeName(c.place), placeName(placeOfClass(c.className))) << c.className;
  }
}

TEST(PartKind, AClassIsCalledAsTheSchemaDescribesIt) {
  EXPECT_EQ("Diagnostics firmware", classTitle("KRXSG_DiagnosticVPD"));
  EXPECT_EQ("MINE_Fan", classTitle("MINE_Fan"));
}

}  // namespace
}  // namespace velhost
