// SPDX-License-Identifier: Apache-2.0
//
// Findings for the tests of comparisons, written briefly.
#pragma once

#include <string>
#include <vector>

#include "host/results/findings.h"

namespace velhost {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

inline void addClass(Findings& findings, const std::string& name, State state,
                     const std::string& reason, const std::vector<PropertyList>& instances) {
  findings.result.requested.push_back(name);
  findings.result.states.push_back({name, "SPFirmwareVPD", state, reason});
  for (const PropertyList& properties : instances) {
    findings.result.instances.push_back({name, properties});
  }
}

// Of one class: present, or absent where there is no instance.
inline Findings findingsWith(const std::string& className,
                             const std::vector<PropertyList>& instances) {
  Findings findings;
  findings.context.machineName = "a server";
  addClass(findings, className, instances.empty() ? State::kAbsent : State::kPresent, "",
           instances);
  return findings;
}

inline PropertyList dimm(const char* name, const char* serial, const char* location = "A") {
  return {{"Name", TCIMValue(name)},
          {"Location", TCIMValue(location)},
          {"PartNumber", TCIMValue("R4G72")},
          {"SerialNumber", TCIMValue(serial)}};
}

inline PropertyList bios(std::uint8_t node, const char* version) {
  return {{"SourceNode", TCIMValue(node)},
          {"Name", TCIMValue("Node " + std::to_string(node) + " : UEFI")},
          {"Version", TCIMValue(version)}};
}

// A slot of SMBIOS; one without a module says so.
inline PropertyList slot(const char* locator, const char* serial) {
  const bool populated = *serial != '\0';
  PropertyList properties{{"DeviceLocator", TCIMValue(locator)},
                          {"BankLocator", TCIMValue("B")},
                          {"Populated", TCIMValue(populated)}};
  if (!populated) return properties;
  properties.emplace_back("PartNumber", TCIMValue("R4G72"));
  properties.emplace_back("SerialNumber", TCIMValue(serial));
  return properties;
}

}  // namespace velhost
