// SPDX-License-Identifier: Apache-2.0
//
// A result with a class of each kind that the documents tell apart, for their tests.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "tests/host/resultsample.h"

namespace velhost {

using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

inline constexpr char kBios[] = "KRXSG_SystemBIOSElement";

// A result of one class with these instances.
inline QueryResult resultOf(const std::string& className,
                            std::initializer_list<PropertyList> list) {
  QueryResult result;
  result.requested = {className};
  result.states = {{className, "SPFirmwareVPD", State::kPresent, ""}};
  for (const PropertyList& properties : list) result.instances.push_back({className, properties});
  return result;
}

// Two nodes' BIOS, a partial class, one that is absent and one that nobody fills; one collector that
// answered and one that failed.
inline QueryResult sampleResult() {
  QueryResult result;
  result.requested = {kBios, "KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_DeviceDriver"};
  result.states = {
      {kBios, "SPFirmwareVPD", State::kPresent, ""},
      {"KRXSG_Vpd", "SPFirmwareVPD", State::kPartial, "slot 2 is empty, as its \"type\" says"},
      {"KRXSG_cKVM", "SPFirmwareVPD", State::kAbsent, "no cKVM device, by the machine type"},
      {"KRXSG_DeviceDriver", "", State::kUnused, ""},
  };
  result.collectors = {{"SPFirmwareVPD", "1.0", true, ""},
                       {"IPMIInventory", "", false, "cannot be loaded"}};
  for (const std::uint8_t node : {std::uint8_t{1}, std::uint8_t{2}}) {
    result.instances.push_back({kBios,
                                {{"SourceNode", TCIMValue(node)},
                                 {"Name", TCIMValue("Node " + std::to_string(node) + " : UEFI")},
                                 {"Version", TCIMValue("104")},
                                 {"BuildNumber", TCIMValue("KRE104C")},
                                 {"PrimaryBIOS", TCIMValue(true)}}});
  }
  result.instances.push_back(
      {"KRXSG_Vpd", {{"Name", TCIMValue("Node 2: DIMM 1")}, {"PartNumber", TCIMValue("R4G72")}}});
  return result;
}

// Published aside: nobody asked for it.
inline PublishedInstance unasked() { return {"KRXSG_USBDevice", {{"DeviceID", TCIMValue("1-1")}}}; }

}  // namespace velhost
