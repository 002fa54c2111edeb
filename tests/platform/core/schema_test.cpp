// SPDX-License-Identifier: Apache-2.0
#include "velhost/schema.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace NKRXVEL20::host {
namespace {

// One line a class: its name, then each property with its type.
std::string described(const ClassSchema& cimClass) {
  std::string text(cimClass.name);
  for (const PropertySchema& property : cimClass.properties) {
    text += ' ' + std::string(property.name) + ':' + std::string(typeName(property.type));
  }
  return text;
}

const std::string kElement =
    " Name:string Version:string SoftwareElementID:string SoftwareElementState:uint16"
    " TargetOperatingSystem:uint16";
const std::string kSpFirmware =
    kElement +
    " SourceNode:uint8 BuildNumber:string FileName:string Checksum:string BuildDate:datetime"
    " PartNumber:string";

TEST(Schema, HasTheClassesWithTheTypesThatTheCollectorsSet) {
  const std::vector<std::string> kClasses = {
      "KRXSG_DiagnosticVPD" + kElement +
          " SourceNode:uint8 Header:string Signature:string Length:string BuildNumber:string"
          " SerialNumber:string UniqueID:string MachineTypeModel:string Checksum:string"
          " BuildDate:datetime FileName:string",
      "KRXSG_SystemBIOSElement" + kElement +
          " SourceNode:uint8 PrimaryBIOS:boolean LoadedStartingAddress:uint64"
          " LoadedEndingAddress:uint64 ReleaseDate:datetime Manufacturer:string"
          " BuildNumber:string FileName:string UniqueID:string MachineTypeModel:string"
          " SerialNumber:string",
      "KRXSG_HardwareRevisionLevel" + kElement + " SourceNode:uint8 Hardwarelevel:string",
      "KRXSG_Vpd Name:string IdentifyingNumber:string Location:string PartNumber:string"
      " SerialNumber:string FRUNumber:string DevicePrefix:string Vendor:string"
      " SlotNumber:string RevisionLevel:string",
      "KRXSG_SPROMFirmwareVPDMain" + kSpFirmware,
      "KRXSG_SPROMFirmwareVPDBootROM" + kSpFirmware,
      "KRXSG_cKVM SoftwareElementID:string SoftwareElementState:uint16"
      " TargetOperatingSystem:uint16 Version:string FirmwareVersion:string",
      "KRXSG_USBTapeFirmwareElement" + kElement + " Manufacturer:string",
      "KRXSG_PostBIOSVPD" + kElement +
          " SourceNode:uint8 BuildNumber:string SerialNumber:string UniqueID:string"
          " MachineTypeModel:string Checksum:string BuildDate:datetime FileName:string",
      "KRXSG_DeviceDriver" + kElement + " Manufacturer:string BuildNumber:string FileName:string",
      "KRXSG_SystemBIOS" + kElement +
          " PrimaryBIOS:boolean ReleaseDate:datetime Manufacturer:string BuildNumber:string",
      "KRXSG_USBDevice DeviceID:string Description:string",
      "KRXSG_TapeDrive DeviceID:string Description:string",
      "KRXSG_QLA_ComputerSystem SourceNode:uint8 Description:string",
      "KRXSG_IPMIFRU Name:string Description:string",
  };
  std::vector<std::string> found;
  for (const ClassSchema& cimClass : schema()) found.push_back(described(cimClass));
  EXPECT_EQ(kClasses, found);
}

TEST(Schema, EachClassAndEachOfItsPropertiesIsNamedOnce) {
  std::set<std::string_view> classes;
  for (const ClassSchema& cimClass : schema()) {
    EXPECT_TRUE(classes.insert(cimClass.name).second) << cimClass.name;
    EXPECT_FALSE(cimClass.description.empty()) << cimClass.name;
    std::set<std::string_view> properties;
    for (const PropertySchema& property : cimClass.properties) {
      EXPECT_TRUE(properties.insert(property.name).second) << cimClass.name << property.name;
    }
  }
}

TEST(Schema, FindsByTheExactName) {
  const ClassSchema* vpd = findClass("KRXSG_Vpd");
  ASSERT_NE(nullptr, vpd);
  EXPECT_EQ("KRXSG_Vpd", vpd->name);
  EXPECT_EQ(nullptr, findClass("KRXSG_VPD"));
  EXPECT_EQ(nullptr, findClass("KRXSG_Vp"));
  EXPECT_EQ(nullptr, findClass(""));
  const PropertySchema* vendor = findProperty(*vpd, "Vendor");
  ASSERT_NE(nullptr, vendor);
  EXPECT_EQ("Vendor", vendor->name);
  EXPECT_EQ(nullptr, findProperty(*vpd, "vendor"));
  EXPECT_EQ(nullptr, findProperty(*vpd, ""));
}

TEST(Schema, AnEmptyValueHasNoTypeName) { EXPECT_EQ("", typeName(ECIMType::kEmpty)); }

}  // namespace
}  // namespace NKRXVEL20::host
