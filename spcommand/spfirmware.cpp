// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "collectors/support/ciminstance.h"
#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "smbios/machinetypes.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

// A firmware build that a Brenna machine names without having the SP.
constexpr char kAbsentSPBuild[] = "ZPXN42BQD";

// A severity of its own, outside those used elsewhere, and kept so.
constexpr auto kNoticeSeverity = static_cast<EVELLogSeverity>(100);

// How an SP is found among the OEM strings.
struct SPRow {
  const char* name;
  bool isPart;  // the first key that contains the name, instead of the key equal to it
  const char* elementId;
};

constexpr SPRow kServiceProcessors[] = {
    {"KRX Ambrel Management Processor", false, "1"},
    {"KRX Quellon Link Adapter", true, "2"},
    {"KRX Torvik Management Processor", false, "3"},
};

using OemEntries = std::map<std::string, std::string>;

OemEntries::const_iterator findSP(const OemEntries& entries, const SPRow& row) {
  if (!row.isPart) return entries.find(row.name);
  return std::ranges::find_if(entries,
                              [&](const auto& entry) { return contains(entry.first, row.name); });
}

// Nine characters from the second behind a "-". As version texts hold letters and digits only, it
// is empty in practice; it is traced all the same.
std::string temporaryVersion(const std::string& versionText) {
  const std::size_t hyphen = versionText.find('-');
  if (hyphen == std::string::npos || hyphen == 0) return {};
  return versionText.substr(hyphen + 2, 9);
}

// True when a Brenna machine names an SP that it does not have.
bool namesAbsentSP(const std::string& versionText) {
  logProgress("This machine is a Brenna.");
  logProgress("The version string is:" + versionText +
              ".\nThe TempVersion is: " + temporaryVersion(versionText) + ".\n");
  if (contains(versionText, kAbsentSPBuild)) {
    logProgress("The KRXSG_SPROMFirmwareVPDMain value is 'ZPXN42BQD'.");
    return true;
  }
  writeLog(kNoticeSeverity, "QLA will be shows in the logs, even if no QLA present in the system.");
  return false;
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getSPFirmware(NamespaceHandle ns) {
  TVELStatusCode result{kStatusSuccess};
  for (const SPRow& row : kServiceProcessors) {
    const auto entry = findSP(smbiosOemEntries, row);
    if (entry == smbiosOemEntries.end()) continue;
    const TVELStatusCode created =
        createSPFirmwareInstance(ns, entry->first, entry->second, row.elementId);
    if (created.status != kStatusSuccess) result = created;
  }
  return result;
}

TVELStatusCode SPFirmwareVpd::createSPFirmwareInstance(NamespaceHandle ns, std::string oemString,
                                                       std::string versionText,
                                                       std::string elementId) {
  if (isOneOf(machineType, kBrennaMachines) && namesAbsentSP(versionText)) return {kStatusSuccess};
  const auto instance = createInstance(
      ns, kMainFirmwareClass,
      "KRXSG_SPROMFirmwareVPDMain: Error allocating instance KRXSG_SPROMFirmwareVPDMain");
  if (!instance) return {kStatusFailure};
  const PropertyRow rows[] = {
      {"Version", TCIMValue(" "), "KRXSG_SPROMFirmwareVPDMain: Error adding Version"},
      {"BuildNumber", TCIMValue(versionText),
       "KRXSG_SPROMFirmwareVPDMain: Error adding BuildNumber"},
      {"SoftwareElementID", TCIMValue(elementId),
       "KRXSG_SPROMFirmwareVPDMain: Error adding SoftwareElementID"},
      {"Name", TCIMValue(oemString), "KRXSG_SPROMFirmwareVPDMain: Error adding Name"},
      {"SoftwareElementState", TCIMValue(kStateRunning),
       "KRXSG_SPROMFirmwareVPDMain: Error adding SoftwareElementState"},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable),
       "KRXSG_SPROMFirmwareVPDMain: Error adding TargetOperatingSystem"},
  };
  if (!setProperties(*instance, rows)) return {kStatusFailure};
  spromMainInstances.push_back(*instance);
  return {kStatusSuccess};
}
