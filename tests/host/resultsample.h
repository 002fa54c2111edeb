// SPDX-License-Identifier: Apache-2.0
//
// A query's result with every kind of entry, for the tests of the formats.
#pragma once

#include "host/collectors/queryresult.h"

namespace velhost {

inline QueryContext sampleContext() {
  return {"file", "a server", {"SPFirmwareVPD", "1.0", "1.0", 0}};
}

inline NKRXVEL20::host::PublishedInstance sampleBios() {
  using NKRXVEL20::TCIMDateTime;
  using NKRXVEL20::TCIMValue;
  return {"KRXSG_SystemBIOSElement",
          {{"Version", TCIMValue("1.08")},
           {"Name", TCIMValue("M\xFCller\n")},
           {"SourceNode", TCIMValue(std::uint8_t{2})},
           {"TargetOperatingSystem", TCIMValue(std::uint16_t{36})},
           {"LoadedEndingAddress", TCIMValue(std::uint64_t{18446744073709551615U})},
           {"PrimaryBIOS", TCIMValue(true)},
           {"ReleaseDate", TCIMValue(TCIMDateTime("20070315000000.000000+000"))}}};
}

inline NKRXVEL20::host::PublishedInstance sampleVpd(const char* name, const char* part) {
  using NKRXVEL20::TCIMValue;
  return {"KRXSG_Vpd", {{"Name", TCIMValue(name)}, {"PartNumber", TCIMValue(part)}}};
}

// A state for each requested class: it is present.
inline std::vector<ClassState> presentStates(const QueryResult& result) {
  std::vector<ClassState> states;
  for (const std::string& name : result.requested) {
    states.push_back({name, "SPFirmwareVPD", State::kPresent, ""});
  }
  return states;
}

}  // namespace velhost
