// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "collectors/support/ciminstance.h"
#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/dotcommand.h"
#include "plugin/nodelabel.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"
#include "smbios/allnumeric.h"
#include "smbios/firmwareversion.h"
#include "smbios/machinetypes.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr char kBuildNumberRefused[] = "KRXSG_DiagnosticVPD: Error adding Build Number";
constexpr char kVersionRefused[] = "KRXSG_DiagnosticVPD: Error adding Version";
constexpr char kElementIdRefused[] = "KRXSG_DiagnosticVPD: Error adding SoftwareElementID";
constexpr char kElementStateRefused[] = "KRXSG_DiagnosticVPD: Error adding SoftwareElementState";
constexpr char kTargetSystemRefused[] = "KRXSG_DiagnosticVPD: Error adding TargetOperatingSystem";

// An OEM string names the diagnostics when it contains one of these.
constexpr const char* kDiagnosticNames[] = {"KRX Diagnostics", "KRX Preboot Diagnostics", "$DS "};

constexpr std::array<unsigned char, 5> kDiagnosticsPath = {0x04, 0x03, 0x05, 0x01, 0x01};

constexpr std::size_t kDiagnosticsRecordSize = 69;

constexpr TextField kDiagnosticsRecord[] = {
    // property  offset  length  logged when refused: the first four share one text on purpose
    {"Header", 0, 2, kBuildNumberRefused},
    {"Signature", 2, 3, kBuildNumberRefused},
    {"Length", 5, 1, kBuildNumberRefused},
    {"BuildNumber", 13, 9, kBuildNumberRefused},
    {"SerialNumber", 22, 7, "Error adding SerialNumber"},
    {"UniqueID", 29, 11, "Error adding UniqueID"},
    {"MachineTypeModel", 40, 7, "Error adding MachineTypeModel"},
    {"FileName", 56, 12, "Error adding FileName"},
    {"Version", 68, 1, kVersionRefused},
};
static_assert(allWithin(kDiagnosticsRecord, kDiagnosticsRecordSize), "a row reads past the record");

bool namesDiagnostics(const std::string& oemString) {
  return std::ranges::any_of(kDiagnosticNames,
                             [&](const char* name) { return contains(oemString, name); });
}

// From the first digit to the last, with what stands between them.
std::string digitRun(const std::string& text) {
  constexpr char kDigits[] = "0123456789";
  const std::size_t first = text.find_first_of(kDigits);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_of(kDigits) - first + 1);
}

// The letters-and-digits copy of an OEM string, with the digits that stand before it in the string
// itself. As a copy without blanks it is seldom found there.
std::string diagnosticsLevel(const std::string& oemString, const std::string& copy) {
  const std::size_t position = oemString.find(copy);
  if (position == std::string::npos) return copy;
  const std::string digits = digitRun(oemString.substr(0, position));
  if (digits.empty() || contains(copy, digits)) return copy;
  return copy + "-" + digits;
}

// False after a refusal.
bool addNodeDiagnostics(SPFirmwareVpd& plugin, const NamespaceHandle& ns, RecordBytes reply,
                        int nodeNumber) {
  // The text names another class, and stays so.
  const auto instance =
      createInstance(ns, kDiagnosticClass, "Error adding KRXSG_SystemBIOSElement class");
  if (!instance || !setTextFields(*instance, kDiagnosticsRecord, reply)) return false;
  const PropertyRow rows[] = {
      {"SoftwareElementID", TCIMValue(std::to_string(nodeNumber)), kElementIdRefused},
      {"SoftwareElementState", TCIMValue(kStateRunning), kElementStateRefused},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable), kTargetSystemRefused},
      {"SourceNode", TCIMValue(static_cast<std::uint8_t>(nodeNumber)), "Error adding Name"},
      {"Name", TCIMValue(nodeElementName(nodeNumber, "Diagnostics")), "Error adding Name"},
  };
  if (!setProperties(*instance, rows)) return false;
  plugin.diagnosticVpdInstances.push_back(*instance);
  return true;
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getDiagsFirmware(NamespaceHandle ns, SPLibrary* spLibrary) {
  for (const auto& [oemString, copy] : smbiosOemEntries) {
    // One that fails has logged why; the others are still tried.
    if (namesDiagnostics(oemString)) createDiagInstance(ns, diagnosticsLevel(oemString, copy));
  }
  if (isOneOf(machineType, kPerNodeDiagnosticsMachines)) {
    createDiagInstanceBasedOnDotCommand(ns, spLibrary);
  }
  return {kStatusSuccess};
}

TVELStatusCode SPFirmwareVpd::createDiagInstance(NamespaceHandle ns, std::string text) {
  logProgress("Entering  SPFirmwareVpd::createDiagInstance");
  const auto instance =
      createInstance(ns, kDiagnosticClass, "Error allocating instance KRXSG_DiagnosticVPD");
  if (!instance) return {kStatusFailure};
  const FirmwareVersion level = splitVersion(std::move(text));
  const bool isNumber = isAllNumeric(level.version.c_str(), static_cast<int>(level.version.size()));
  const PropertyRow rows[] = {
      {"BuildNumber", TCIMValue(level.build), kBuildNumberRefused},
      {"Version", TCIMValue(isNumber ? level.version : " "), kVersionRefused},
      {"SoftwareElementID", TCIMValue(" "), kElementIdRefused},
      {"SoftwareElementState", TCIMValue(kStateRunning), kElementStateRefused},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable), kTargetSystemRefused},
  };
  if (!setProperties(*instance, rows)) return {kStatusFailure};
  diagnosticVpdInstances.push_back(*instance);
  logProgress("Leaving  SPFirmwareVpd::createDiagInstance");
  return {kStatusSuccess};
}

TVELStatusCode SPFirmwareVpd::createDiagInstanceBasedOnDotCommand(NamespaceHandle ns,
                                                                  SPLibrary* spLibrary) {
  if (!spLibrary->isDotcommand() || !spLibrary->checkSPComm()) return {kStatusSuccess};
  const int count = spLibrary->discoverSPs();
  if (count == 0 || count == 1) return {kStatusSuccess};
  // The counter is 8 bits wide; machines have far fewer nodes.
  for (std::uint8_t i = 0; i < count; ++i) {  // NOLINT(bugprone-too-small-loop-variable)
    ReplyBuffer reply{};
    if (getDiagVPDInfo(spLibrary, reply.data(), i).status != kStatusSuccess) continue;
    if (!addNodeDiagnostics(*this, ns, reply, i + 1)) return {kStatusFailure};
  }
  return {kStatusSuccess};
}

TVELStatusCode SPFirmwareVpd::getDiagVPDInfo(SPLibrary* spLibrary, unsigned char* reply,
                                             int spIndex) {
  if (!sendDotCommand(*spLibrary, kDiagnosticsPath, reply, spIndex)) return {kStatusFailure};
  const std::span record(reply, kDiagnosticsRecordSize);
  const bool isEmpty = std::ranges::all_of(record, [](unsigned char byte) { return byte == 0; });
  return {isEmpty ? kStatusFailure : kStatusSuccess};
}
