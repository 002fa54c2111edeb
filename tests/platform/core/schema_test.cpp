// SPDX-License-Identifier: Apache-2.0
#include "velhost/schema.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <regex>
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
      "KRXSG_ManagementController Name:string DeviceID:uint8 DeviceRevision:uint8"
      " FirmwareVersion:string AuxiliaryFirmwareRevision:string IPMIVersion:string"
      " ManufacturerID:uint64 ProductID:uint16 GUID:string",
      "KRXSG_IPMIFRU FRUDeviceID:uint8 Name:string Description:string EntityID:uint8"
      " EntityInstance:uint8 ChassisType:string ChassisPartNumber:string"
      " ChassisSerialNumber:string BoardManufacturer:string BoardProductName:string"
      " BoardSerialNumber:string BoardPartNumber:string BoardManufactureDate:datetime"
      " ProductManufacturer:string ProductName:string ProductPartNumber:string"
      " ProductVersion:string ProductSerialNumber:string ProductAssetTag:string Notes:string",
      "KRXSG_SystemFirmware InstanceID:string Vendor:string Version:string ReleaseDate:datetime"
      " SystemFirmwareRevision:string EmbeddedControllerRevision:string ROMSize:uint64"
      " UEFI:boolean",
      "KRXSG_ComputerSystem Name:string Manufacturer:string ProductName:string Version:string"
      " SerialNumber:string UUID:string SKUNumber:string Family:string ChassisType:string"
      " ChassisSerialNumber:string ChassisAssetTag:string BoardManufacturer:string"
      " BoardProduct:string BoardSerialNumber:string",
      "KRXSG_PhysicalMemory DeviceLocator:string BankLocator:string Populated:boolean"
      " Capacity:uint64 FormFactor:string MemoryType:string Speed:uint64 Manufacturer:string"
      " PartNumber:string SerialNumber:string AssetTag:string",
  };
  std::vector<std::string> found;
  for (const ClassSchema& cimClass : schema()) {
    if (!cimClass.isAbstract) found.push_back(described(cimClass));
  }
  EXPECT_EQ(kClasses, found);
}

// "CLASS : SUPERCLASS by PROVIDER, key KEY KEY".
std::string identified(const ClassSchema& cimClass) {
  std::string text(cimClass.name);
  if (cimClass.superclass != nullptr) text += " : " + std::string(cimClass.superclass->name);
  if (!cimClass.provider.empty()) text += " by " + std::string(cimClass.provider);
  if (cimClass.isAbstract) text += ", abstract";
  std::string keys;
  for (const PropertySchema& property : cimClass.properties) {
    if (property.isKey) keys += ' ' + std::string(property.name);
  }
  return keys.empty() ? text : text + ", key" + keys;
}

TEST(Schema, SaysWhoServesAClassAndWhatTellsItsInstancesApart) {
  const std::vector<std::string> kClasses = {
      "CIM_SoftwareElement, abstract",
      "CIM_BIOSElement : CIM_SoftwareElement, abstract",
      "CIM_FRU, abstract",
      "CIM_LogicalDevice, abstract, key DeviceID",
      "CIM_ComputerSystem, abstract",
      "KRXSG_DiagnosticVPD : CIM_SoftwareElement by SPFirmwareVPD, key Name SourceNode",
      "KRXSG_SystemBIOSElement : CIM_BIOSElement by SPFirmwareVPD, key SourceNode",
      "KRXSG_HardwareRevisionLevel : CIM_SoftwareElement by SPFirmwareVPD, key SourceNode",
      "KRXSG_Vpd : CIM_FRU by SPFirmwareVPD, key Name SlotNumber",
      "KRXSG_SPROMFirmwareVPDMain : CIM_SoftwareElement by SPFirmwareVPD, key Name",
      "KRXSG_SPROMFirmwareVPDBootROM : CIM_SoftwareElement by SPFirmwareVPD, key SourceNode",
      "KRXSG_cKVM : CIM_SoftwareElement by SPFirmwareVPD, key SoftwareElementID",
      "KRXSG_USBTapeFirmwareElement : CIM_SoftwareElement by SPFirmwareVPD, key Name Manufacturer",
      "KRXSG_PostBIOSVPD : CIM_SoftwareElement by SPFirmwareVPD, key SourceNode",
      "KRXSG_DeviceDriver : CIM_SoftwareElement by SPFirmwareVPD, key Name",
      "KRXSG_SystemBIOS : CIM_BIOSElement by SPFirmwareVPD, key Name",
      "KRXSG_USBDevice : CIM_LogicalDevice by DeviceInventory, key DeviceID",
      "KRXSG_TapeDrive : CIM_LogicalDevice by DeviceInventory, key DeviceID",
      "KRXSG_QLA_ComputerSystem : CIM_ComputerSystem, key SourceNode",
      "KRXSG_ManagementController by IPMIInventory, key Name",
      "KRXSG_IPMIFRU by IPMIInventory, key FRUDeviceID",
      "KRXSG_SystemFirmware by SMBIOSInventory, key InstanceID",
      "KRXSG_ComputerSystem by SMBIOSInventory, key Name",
      "KRXSG_PhysicalMemory by SMBIOSInventory, key DeviceLocator BankLocator",
  };
  std::vector<std::string> found;
  for (const ClassSchema& cimClass : schema()) found.push_back(identified(cimClass));
  EXPECT_EQ(kClasses, found);
}

// Inherited by a property whose class gives no names of its own.
TEST(Schema, NamesTheValuesOfNumbers) {
  const PropertySchema* state =
      findProperty(*findClass("KRXSG_SystemBIOSElement"), "SoftwareElementState");
  ASSERT_NE(nullptr, state);
  EXPECT_EQ((std::vector<std::string_view>{"0", "1", "2", "3"}),
            std::vector(state->valueMap.begin(), state->valueMap.end()));
  EXPECT_EQ((std::vector<std::string_view>{"Deployable", "Installable", "Executable", "Running"}),
            std::vector(state->values.begin(), state->values.end()));
  const PropertySchema* system = findProperty(*findClass("KRXSG_cKVM"), "TargetOperatingSystem");
  ASSERT_NE(nullptr, system);
  EXPECT_EQ((std::vector<std::string_view>{"0", "1", "66"}),
            std::vector(system->valueMap.begin(), system->valueMap.end()));
  EXPECT_EQ((std::vector<std::string_view>{"Unknown", "Other", "Not applicable"}),
            std::vector(system->values.begin(), system->values.end()));
}

// Those whose origins are proven.
constexpr std::array<std::string_view, 2> kProvenProviders = {"SPFirmwareVPD", "SMBIOSInventory"};

// What the firmware collector never fills comes from nowhere.
constexpr std::array<std::string_view, 3> kNeverFilled = {"KRXSG_PostBIOSVPD", "KRXSG_DeviceDriver",
                                                          "KRXSG_SystemBIOS"};

TEST(Schema, SaysWhereEachValueOfACollectorComesFrom) {
  for (const ClassSchema& cimClass : schema()) {
    if (std::ranges::find(kProvenProviders, cimClass.provider) == kProvenProviders.end()) continue;
    const bool isFilled = std::ranges::find(kNeverFilled, cimClass.name) == kNeverFilled.end();
    for (const PropertySchema& property : cimClass.properties) {
      EXPECT_EQ(isFilled, !property.mappingStrings.empty()) << cimClass.name << property.name;
      EXPECT_FALSE(property.description.empty()) << cimClass.name << property.name;
    }
  }
}

// The notation of docs/schema.md.
TEST(Schema, OriginsAreInTheirNotation) {
  const std::string bytes = R"(\|(byte \d+|bytes \d+-\d*)\|)";
  const std::string rule =
      "(text|decimal|date|hex bytes|hex digits|JEP106 maker|version part|numeric version "
      "part|build part|"
      "letters and digits|shift 16|level|low nibble|(16|20)-bit number|BCD version|IPMI version|"
      "GUID|typed text|minutes since 1996|chassis type|before [^|]+|between [^|]+ and [^|]+)( or "
      "blank)?";
  const std::string ofStructures =
      "(text|trimmed|month/day/year|major[.]minor|number|not zero|bit 3|UUID|ROM size|"
      "extended ROM size|memory size|extended memory size|chassis type|form factor|memory type|"
      "JEP106 text|JEP106 module maker)";
  const std::string as = R"((\|as [^|]+)?)";
  const std::string clause = R"(\w+ (is set|is unset|(is|is not|has|lacks) [^|]+?))";
  const std::string when = R"((\|when )" + clause + "( and " + clause + ")*)?";
  const std::string hex = "[0-9A-F]{2}";
  const std::string hexes = hex + "( " + hex + ")*";
  const std::regex kForms[] = {
      std::regex("DotCommand[.]VEL[|](" + hex + " ){3}" + hex + "( " + hex + "| n)?([|]data " +
                 hexes + ")?" + bytes + rule + as + when),
      std::regex("TamberCommand[.]VEL[|](" + hex + " ){3}" + hex + bytes + rule + as + when),
      std::regex("IPMI[.]VEL[|]" + hex + " " + hex + "([|]data " + hexes + ")?" + bytes + rule +
                 as + when),
      std::regex("IPMI[.]SDR[|]type \\d+" + bytes + rule + as + when),
      std::regex("IPMI[.]FRU[|](chassis|board|product) area([|]field \\d+[|]|" + bytes + ")" +
                 rule + as + when),
      std::regex("IPMI[.]FRU[|]what was wrong[|]" + rule + as + when),
      std::regex("SMBIOS[.]DMTF[|]type \\d+[|]offset \\d+[|](string|uint8|uint16)[|]" + rule + as +
                 when),
      std::regex("SMBIOS[.]DMTF[|]type \\d+[|]offset \\d+[|](whole string|uint8|uint16|uint32|"
                 "16 bytes)[|]" +
                 ofStructures + as + when),
      std::regex("SMBIOS[.]DMTF[|]type \\d+[|]string with [^|]+[|]" + rule + as + when),
      std::regex("Instance[.]VEL[|]\\w+[.]\\w+[|]" + rule + as + when),
      std::regex("Sysfs[.]Linux[|]\\w+[|]as [^|]+" + when),
      std::regex("Constant[.]VEL[|][^|]*" + when),
      std::regex("Derived[.]VEL[|][^|]+" + when),
  };
  for (const ClassSchema& cimClass : schema()) {
    for (const PropertySchema& property : cimClass.properties) {
      for (const std::string_view origin : property.mappingStrings) {
        EXPECT_TRUE(std::ranges::any_of(kForms,
                                        [&](const std::regex& form) {
                                          return std::regex_match(origin.begin(), origin.end(),
                                                                  form);
                                        }))
            << cimClass.name << '.' << property.name << ": " << origin;
      }
    }
  }
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

TEST(Schema, AClassDerivesFromItselfAndFromAllAbove) {
  const ClassSchema& element = *findClass("CIM_SoftwareElement");
  const ClassSchema& bios = *findClass("CIM_BIOSElement");
  const ClassSchema& system = *findClass("KRXSG_SystemBIOSElement");
  EXPECT_TRUE(derivesFrom(system, element));
  EXPECT_TRUE(derivesFrom(system, bios));
  EXPECT_TRUE(derivesFrom(system, system));
  EXPECT_FALSE(derivesFrom(bios, system));
  EXPECT_FALSE(derivesFrom(*findClass("KRXSG_cKVM"), bios));
}

TEST(Schema, AProcessWithoutOneHasNoClass) {
  const SchemaPtr kept = currentSchema();
  setSchema(nullptr);
  EXPECT_TRUE(schema().empty());
  EXPECT_EQ(nullptr, findClass("KRXSG_Vpd"));
  setSchema(kept);
  EXPECT_NE(nullptr, findClass("KRXSG_Vpd"));
}

TEST(Schema, AnEmptyValueHasNoTypeName) { EXPECT_EQ("", typeName(ECIMType::kEmpty)); }

}  // namespace
}  // namespace NKRXVEL20::host
