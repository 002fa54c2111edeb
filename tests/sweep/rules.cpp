// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/rules.h"

#include <algorithm>
#include <cctype>

namespace sweep {
namespace {

constexpr SettingRule kOemDiagnostics[] = {
    {"BuildNumber", "KRXSG_DiagnosticVPD: Error adding Build Number"},
    {"Version", "KRXSG_DiagnosticVPD: Error adding Version"},
    {"SoftwareElementID", "KRXSG_DiagnosticVPD: Error adding SoftwareElementID"},
    {"SoftwareElementState", "KRXSG_DiagnosticVPD: Error adding SoftwareElementState"},
    {"TargetOperatingSystem", "KRXSG_DiagnosticVPD: Error adding TargetOperatingSystem"},
};

constexpr SettingRule kNodeDiagnostics[] = {
    {"Header", "KRXSG_DiagnosticVPD: Error adding Build Number"},
    {"Signature", "KRXSG_DiagnosticVPD: Error adding Build Number"},
    {"Length", "KRXSG_DiagnosticVPD: Error adding Build Number"},
    {"BuildNumber", "KRXSG_DiagnosticVPD: Error adding Build Number"},
    {"SerialNumber", "Error adding SerialNumber"},
    {"UniqueID", "Error adding UniqueID"},
    {"MachineTypeModel", "Error adding MachineTypeModel"},
    {"FileName", "Error adding FileName"},
    {"Version", "KRXSG_DiagnosticVPD: Error adding Version"},
    {"SoftwareElementID", "KRXSG_DiagnosticVPD: Error adding SoftwareElementID"},
    {"SoftwareElementState", "KRXSG_DiagnosticVPD: Error adding SoftwareElementState"},
    {"TargetOperatingSystem", "KRXSG_DiagnosticVPD: Error adding TargetOperatingSystem"},
    {"SourceNode", "Error adding Name"},
    {"Name", "Error adding Name"},
};

constexpr SettingRule kSystemBios[] = {
    {"SourceNode", "Error adding Name"},
    {"Name", "Error adding Name"},
    {"SoftwareElementState", "Error adding SoftwareElementState"},
    {"SoftwareElementID", "Error adding SoftwareElementID"},
    {"TargetOperatingSystem", "Error adding TargetOperatingSystem"},
    {"PrimaryBIOS", "Error adding PrimaryBIOS"},
    {"LoadedStartingAddress", "Error adding LoadedStartingAddress"},
    {"LoadedEndingAddress", "Error adding LoadedEndingAddress"},
    {"ReleaseDate", nullptr, true},  // a rule of its own: the instance goes on without it
    {"Manufacturer", "Error adding Manufacturer"},
    {"Version", "Error adding Version"},
    {"BuildNumber", "Error adding Build Number"},
    {"FileName", "Error adding FileName", true},
    {"UniqueID", "Error adding UniqueID", true},
    {"MachineTypeModel", "Error adding MachineTypeModel", true},
    {"SerialNumber", "Error adding SerialNumber", true},
};

constexpr SettingRule kFirmwareOfSmbios[] = {
    {"Version", "KRXSG_SPROMFirmwareVPDMain: Error adding Version"},
    {"BuildNumber", "KRXSG_SPROMFirmwareVPDMain: Error adding BuildNumber"},
    {"SoftwareElementID", "KRXSG_SPROMFirmwareVPDMain: Error adding SoftwareElementID"},
    {"Name", "KRXSG_SPROMFirmwareVPDMain: Error adding Name"},
    {"SoftwareElementState", "KRXSG_SPROMFirmwareVPDMain: Error adding SoftwareElementState"},
    {"TargetOperatingSystem", "KRXSG_SPROMFirmwareVPDMain: Error adding TargetOperatingSystem"},
};

constexpr SettingRule kTamber[] = {
    {"Name", "Error adding Name"},
    {"SoftwareElementID", "Error adding SoftwareElementID"},
    {"SoftwareElementState", "Error adding SoftwareElementState"},
    {"TargetOperatingSystem", "Error adding TargetOperatingSystem"},
    {"BuildNumber", "Error adding BuildNumber"},
    {"Version", "Error adding Version"},
};

constexpr SettingRule kCommonVpd[] = {
    {"Name", "Error adding VPD data"},
    {"IdentifyingNumber", "Error adding IdentifyingNumber"},
    {"Location", "Error adding Location Data"},
    {"PartNumber", "Error adding PartNumber"},
    {"SerialNumber", "Error adding SerialNumber"},
    {"FRUNumber", "Error adding FRUNumber"},
    {"DevicePrefix", "Error adding DevicePrefix"},
    {"Vendor", "Error adding Vendor Data"},
    {"SlotNumber", "Error adding SlotNumber"},
};

constexpr SettingRule kDimmVpd[] = {
    {"Name", "Error adding Name"},
    {"IdentifyingNumber", "Error adding IdentifyingNumber"},
    {"FRUNumber", "Error adding FRUNumber"},
    {"Vendor", "Error adding Vendor"},
    {"Location", "Error adding Location"},
    {"PartNumber", "Error adding PartNumber"},
    {"RevisionLevel", "Error adding RevisionLevel"},
    {"SerialNumber", "Error adding SerialNumber"},
};

constexpr SettingRule kPlanarVpd[] = {
    {"IdentifyingNumber", "Error adding IdentifyingNumber"},
    {"Name", "Error adding Name"},
    {"Vendor", "Error adding Vendor"},
    {"FRUNumber", "Error adding FRUNumber"},
    {"Location", "Error adding Location"},
    {"PartNumber", "Error adding PartNumber"},
    {"SerialNumber", "Error adding SerialNumber"},
};

constexpr char kcKVMRefused[] = "cKVM - Cannot set property value for KRXSG_cKVM instance.";
constexpr SettingRule kcKVM[] = {
    {"SoftwareElementID", kcKVMRefused},     {"SoftwareElementState", kcKVMRefused},
    {"TargetOperatingSystem", kcKVMRefused}, {"Version", kcKVMRefused},
    {"FirmwareVersion", kcKVMRefused},
};

constexpr InstanceRule kRules[] = {
    {"KRXSG_DiagnosticVPD", "Error allocating instance KRXSG_DiagnosticVPD", kOemDiagnostics,
     Aftermath::kOemDiagnostics},
    // Names another class than its own.
    {"KRXSG_DiagnosticVPD", "Error adding KRXSG_SystemBIOSElement class", kNodeDiagnostics,
     Aftermath::kOtherNodes},
    {"KRXSG_SystemBIOSElement", "Error adding KRXSG_SystemBIOSElement class", kSystemBios,
     Aftermath::kSystemBios},
    {"KRXSG_SPROMFirmwareVPDMain",
     "KRXSG_SPROMFirmwareVPDMain: Error allocating instance KRXSG_SPROMFirmwareVPDMain",
     kFirmwareOfSmbios, Aftermath::kFirmwareOfSmbios},
    {"KRXSG_SPROMFirmwareVPDMain", "Error adding SP Firmware VPD data", kTamber,
     Aftermath::kTamber},
    {"KRXSG_Vpd", "Error adding KRXSG_VPD class", kCommonVpd, Aftermath::kNothing},
    {"KRXSG_Vpd", "Error adding KRXSG_VPD class", kDimmVpd, Aftermath::kNothing},
    {"KRXSG_Vpd", "Error adding KRXSG_VPD class", kPlanarVpd, Aftermath::kNothing},
    {"KRXSG_cKVM", "cKVM - Cannot create KRXSG_cKVM instance.", kcKVM, Aftermath::kNothing},
};

bool fits(const InstanceRule& rule, const std::vector<std::string>& settings) {
  auto made = settings.begin();
  for (const SettingRule& setting : rule.settings) {
    const bool isMade = made != settings.end() && *made == setting.property;
    if (!isMade && !setting.optional) return false;
    made += isMade ? 1 : 0;
  }
  return made == settings.end();
}

constexpr ComponentRule kComponents[] = {
    {"0403050B", "00007F00", true, nullptr},  // a DIMM's texts stand with the commands' rules
    {"0403050C", "00008000", true, "VPD not available "},
    {"0403050D", "00008100", false,
     "power backplane VPD not available...trying alternate data set"},
    {"0403050D", "00008000", false, "Power backplane VPD not available"},
    {"04030503", "0000A000", false, "Processor Card VPD not available"},
    {"0403050E", "00007000", false, "DASD backplane VPD not available"},
    {"04030502", "10001000", false, "planar VPD not available"},
};

constexpr int kCommandLines[] = {0, 8, 16, 18, kDescriptorLines};

}  // namespace

const InstanceRule* ruleOf(const std::string& className, const std::vector<std::string>& settings) {
  const auto* const found = std::ranges::find_if(kRules, [&](const InstanceRule& rule) {
    return className == rule.className && fits(rule, settings);
  });
  return found == std::end(kRules) ? nullptr : found;
}

std::string recordCreationText(const std::string& className) {
  return "Error adding Class " + className;
}

std::string recordSettingText(const std::string& property, bool isFirstName) {
  if (isFirstName) return "Error adding SP Name property";
  // The name is made anew for the node, on the node's behalf.
  return "Error adding Property " + (property == "Name" ? "SourceNode" : property);
}

const ComponentRule* componentRule(const std::string& command, const std::string& data) {
  const auto* const found = std::ranges::find_if(kComponents, [&](const ComponentRule& rule) {
    return command.starts_with(rule.path) && data == rule.data;
  });
  return found == std::end(kComponents) ? nullptr : found;
}

std::string numbered(const std::string& name, const std::string& command, const std::string& text) {
  return name + "  " + std::to_string(std::stoi(command.substr(8), nullptr, 16)) + ' ' + text;
}

int lineBehindGroup(int line) {
  const int first = line == 0 ? 1 : line;
  return *std::ranges::find_if(kCommandLines, [&](int at) { return at >= first; }) + 1;
}

bool isPostBiosProperty(const std::string& property) {
  return property == "FileName" || property == "UniqueID" || property == "MachineTypeModel" ||
         property == "SerialNumber";
}

bool isBrennaTrace(const Event& event) {
  constexpr const char* kTexts[] = {"This machine is a Brenna.", "The version string is:",
                                    "The KRXSG_SPROMFirmwareVPDMain value is 'ZPXN42BQD'.",
                                    "QLA will be shows in the logs,"};
  return event.kind == Kind::kCoreLog && std::ranges::any_of(kTexts, [&](const char* text) {
           return event.value.starts_with(text);
         });
}

LevelReply readLevel(const std::vector<unsigned char>& record, int length) {
  if (length == 0) return {.isGood = false, .text = "cKVM - Incorrect IPMI response length."};
  if (record[8] != 0) return {.isGood = false, .text = "cKVM - Incorrect completion code."};
  if (record[4] != 0) return {.isGood = false, .text = "cKVM - Bad IPMI completion code."};
  if (record[9] < 0x20 || record[9] > 0x7E)
    return {.isGood = false, .text = "cKVM - Ineffective response data."};
  LevelReply result{.isGood = true};
  for (int i = 0; i < length && 9 + i < std::ssize(record); ++i) {
    const int byte = record[static_cast<std::size_t>(9 + i)];
    const bool isLetter = (byte < 0x80 && std::isalnum(byte) != 0);
    if (isLetter || std::string_view(".()[]").find(static_cast<char>(byte)) != std::string::npos) {
      result.level += static_cast<char>(byte);
    }
  }
  return result;
}

std::string tamberText(const std::vector<unsigned char>& reply, int length) {
  const auto begin = reply.begin() + 3;
  const auto end = begin + std::clamp(length, 0, 252);
  return {begin, std::find(begin, end, 0)};
}

}  // namespace sweep
