// SPDX-License-Identifier: Apache-2.0
#include "velhost/schema.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace NKRXVEL20::host {
namespace {

using enum ECIMType;

template <std::size_t A, std::size_t B>
constexpr std::array<PropertySchema, A + B> join(const std::array<PropertySchema, A>& first,
                                                 const std::array<PropertySchema, B>& second) {
  std::array<PropertySchema, A + B> all{};
  std::copy(first.begin(), first.end(), all.begin());
  std::copy(second.begin(), second.end(), all.begin() + A);
  return all;
}

// clang-format off

// What identifies a CIM_SoftwareElement (DMTF CIM schema).
constexpr auto kSoftwareElement = std::to_array<PropertySchema>({
    {"Name",                  kString},
    {"Version",               kString},
    {"SoftwareElementID",     kString},
    {"SoftwareElementState",  kUint16},
    {"TargetOperatingSystem", kUint16},
});

constexpr auto kDiagnosticVpd = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"Header",                kString},
    {"Signature",             kString},
    {"Length",                kString},  // the record's byte as a text of one character
    {"BuildNumber",           kString},
    {"SerialNumber",          kString},
    {"UniqueID",              kString},
    {"MachineTypeModel",      kString},
    {"Checksum",              kString},
    {"BuildDate",             kDateTime},
    {"FileName",              kString},
}));

constexpr auto kSystemBiosElement = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"PrimaryBIOS",           kBoolean},
    {"LoadedStartingAddress", kUint64},
    {"LoadedEndingAddress",   kUint64},
    {"ReleaseDate",           kDateTime},
    {"Manufacturer",          kString},
    {"BuildNumber",           kString},
    {"FileName",              kString},
    {"UniqueID",              kString},
    {"MachineTypeModel",      kString},
    {"SerialNumber",          kString},
}));

constexpr auto kHardwareRevisionLevel = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"Hardwarelevel",         kString},
}));

constexpr auto kVpd = std::to_array<PropertySchema>({
    {"Name",                  kString},
    {"IdentifyingNumber",     kString},
    {"Location",              kString},
    {"PartNumber",            kString},
    {"SerialNumber",          kString},
    {"FRUNumber",             kString},
    {"DevicePrefix",          kString},
    {"Vendor",                kString},
    {"SlotNumber",            kString},
    {"RevisionLevel",         kString},
});

constexpr auto kSpFirmware = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"BuildNumber",           kString},
    {"FileName",              kString},
    {"Checksum",              kString},
    {"BuildDate",             kDateTime},
    {"PartNumber",            kString},
}));

constexpr auto kCkvm = std::to_array<PropertySchema>({
    {"SoftwareElementID",     kString},
    {"SoftwareElementState",  kUint16},
    {"TargetOperatingSystem", kUint16},
    {"Version",               kString},
    {"FirmwareVersion",       kString},
});

constexpr auto kUsbTapeFirmwareElement = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"Manufacturer",          kString},
}));

constexpr auto kPostBiosVpd = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"BuildNumber",           kString},
    {"SerialNumber",          kString},
    {"UniqueID",              kString},
    {"MachineTypeModel",      kString},
    {"Checksum",              kString},
    {"BuildDate",             kDateTime},
    {"FileName",              kString},
}));

constexpr auto kDeviceDriver = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"Manufacturer",          kString},
    {"BuildNumber",           kString},
    {"FileName",              kString},
}));

constexpr auto kSystemBios = join(kSoftwareElement, std::to_array<PropertySchema>({
    {"PrimaryBIOS",           kBoolean},
    {"ReleaseDate",           kDateTime},
    {"Manufacturer",          kString},
    {"BuildNumber",           kString},
}));

constexpr auto kDevice = std::to_array<PropertySchema>({
    {"DeviceID",              kString},
    {"Description",           kString},
});

constexpr auto kSpComputerSystem = std::to_array<PropertySchema>({
    {"SourceNode",            kUint8},
    {"Description",           kString},
});

constexpr auto kIpmiFru = std::to_array<PropertySchema>({
    {"Name",                  kString},
    {"Description",           kString},
});

constexpr ClassSchema kClasses[] = {
    // Filled by the firmware collector.
    {"KRXSG_DiagnosticVPD",           "Diagnostics firmware", kDiagnosticVpd},
    {"KRXSG_SystemBIOSElement",       "System BIOS or UEFI firmware, by node", kSystemBiosElement},
    {"KRXSG_HardwareRevisionLevel",   "Hardware revision level of a service processor",
     kHardwareRevisionLevel},
    {"KRXSG_Vpd",                     "Vital product data of a component", kVpd},
    {"KRXSG_SPROMFirmwareVPDMain",    "Main firmware of a service processor", kSpFirmware},
    {"KRXSG_SPROMFirmwareVPDBootROM", "Boot-ROM firmware of a service processor", kSpFirmware},
    {"KRXSG_cKVM",                    "Firmware of the cKVM device", kCkvm},
    {"KRXSG_USBTapeFirmwareElement",  "Firmware of a USB tape drive", kUsbTapeFirmwareElement},
    // Served by it without instances.
    {"KRXSG_PostBIOSVPD",             "POST/BIOS vital product data", kPostBiosVpd},
    {"KRXSG_DeviceDriver",            "Device driver", kDeviceDriver},
    {"KRXSG_SystemBIOS",              "System BIOS", kSystemBios},
    // Filled by other collectors.
    {"KRXSG_USBDevice",               "USB device", kDevice},
    {"KRXSG_TapeDrive",               "Tape drive", kDevice},
    {"KRXSG_QLA_ComputerSystem",      "Service processor as a computer system", kSpComputerSystem},
    {"KRXSG_IPMIFRU",                 "Field-replaceable unit known through IPMI", kIpmiFru},
};

// clang-format on

// Null when none of the table's rows has the name.
template <typename Row>
const Row* findByName(std::span<const Row> table, std::string_view name) {
  const auto row = std::ranges::find(table, name, &Row::name);
  return row == table.end() ? nullptr : &*row;
}

}  // namespace

std::span<const ClassSchema> schema() { return kClasses; }

const ClassSchema* findClass(std::string_view name) { return findByName(schema(), name); }

const PropertySchema* findProperty(const ClassSchema& cimClass, std::string_view name) {
  return findByName(cimClass.properties, name);
}

std::string_view typeName(ECIMType type) {
  switch (type) {
    case kString:
      return "string";
    case kBoolean:
      return "boolean";
    case kUint8:
      return "uint8";
    case kUint16:
      return "uint16";
    case kUint64:
      return "uint64";
    case kDateTime:
      return "datetime";
    case kEmpty:
      break;
  }
  return "";
}

}  // namespace NKRXVEL20::host
