// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/spfirmwarevpd.h"
#include "smbios/smbioswalk.h"
#include "vel/osspecific.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr int kOemStringsType = 11;      // DSP0134 7.12
constexpr std::size_t kCountOffset = 4;  // number of strings
constexpr std::size_t kStringSetSize = 1024;

constexpr char kQuellonName[] = "KRX Quellon Link Adapter";
constexpr char kTorvikName[] = "KRX Torvik Management Processor";

struct NameRule {
  const char* contained = nullptr;
  const char* name = nullptr;
  bool cutsAtHyphen = false;  // a "-" ends the name: what stands before it is kept as it is
};

// The first rule whose text stands in an OEM string gives its name.
constexpr NameRule kNameRules[] = {
    {"KRX Diagnostics", "KRX Diagnostics"},
    {"KRX Ambrel Management Processor", "KRX Ambrel Management Processor"},
    {"KRX Ambrels Management Processor", "KRX Ambrel Management Processor"},
    {kQuellonName, kQuellonName, true},
    {kTorvikName, kTorvikName},
    {"KRX Torviks Management Processor", kTorvikName},
};

std::string normalisedName(const std::string& oemString) {
  for (const NameRule& rule : kNameRules) {
    if (!contains(oemString, rule.contained)) continue;
    const std::size_t hyphen = rule.cutsAtHyphen ? oemString.find('-') : std::string::npos;
    return hyphen == std::string::npos ? rule.name : oemString.substr(0, hyphen);
  }
  return oemString;
}

std::string lettersAndDigits(std::string text) {
  TOSSpecific::removeNonAlpaNumeric(text);
  return text;
}

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\n\v\f\r") == std::string::npos;
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getType11() {
  logProgress("Entering SPFirmwareVpd::getType11()");
  const auto addStrings = [this](const SmbiosBuffer& structure) {
    auto strings = copyStringSet<kStringSetSize>(structure);
    for (int number = 1; number <= structure[kCountOffset]; ++number) {
      const std::string oemString = smbiosString(strings, number);
      if (isBlank(oemString)) continue;
      // The first of two strings with the same name stays.
      smbiosOemEntries.try_emplace(normalisedName(oemString), lettersAndDigits(oemString));
    }
    return true;
  };
  const TVELStatusCode result =
      walkSmbios({.type = kOemStringsType,
                  // Names another operation, and stays so: people search their logs for it.
                  .openFailedText = "getDiagsFirmware: Unable to open SMBIOS lib error = ",
                  .process = addStrings});
  if (result.status != kStatusSuccess) return result;
  logProgress("Exiting SPFirmwareVpd::getType11()");
  return result;
}

std::string SPFirmwareVpd::getSpNameFromSmBios() {
  if (smbiosOemEntries.contains(kTorvikName)) return kTorvikName;
  const auto quellon = std::ranges::find_if(
      smbiosOemEntries, [](const auto& entry) { return contains(entry.first, kQuellonName); });
  return quellon == smbiosOemEntries.end() ? kQuellonName : quellon->first;
}
