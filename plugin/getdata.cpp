// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <optional>

#include "collectors/support/corelog.h"
#include "collectors/support/plugin.h"
#include "plugin/classnames.h"
#include "plugin/spfirmwarevpd.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr std::size_t kVpdIndex = 4;
constexpr std::size_t kSystemBiosIndex = 8;  // accepted, and has no list of instances

// The level of a cKVM device that does not tell its own.
constexpr char kcKVMLevelUnread[] = "1.3.11.37";

// The lists in the order of the class names.
constexpr auto kInstanceLists = std::to_array<SPFirmwareVpd::InstanceList SPFirmwareVpd::*>({
    &SPFirmwareVpd::diagnosticVpdInstances,
    &SPFirmwareVpd::postBiosVpdInstances,
    &SPFirmwareVpd::systemBiosElementInstances,
    &SPFirmwareVpd::hardwareRevisionInstances,
    &SPFirmwareVpd::vpdInstances,
    &SPFirmwareVpd::spromMainInstances,
    &SPFirmwareVpd::spromBootRomInstances,
    &SPFirmwareVpd::deviceDriverInstances,
    nullptr,
    &SPFirmwareVpd::cKVMInstances,
});
static_assert(kInstanceLists.size() == std::tuple_size_v<decltype(SPFirmwareVpd::classNames)>);
static_assert(kInstanceLists[kSystemBiosIndex] == nullptr);

std::optional<std::size_t> publishedClassIndex(const std::array<std::string, 10>& classNames,
                                               const std::string& className) {
  for (std::size_t i = 0; i < classNames.size(); ++i) {
    if (i != kSystemBiosIndex && classNames[i] == className) return i;
  }
  return std::nullopt;
}

}  // namespace

SPFirmwareVpd::InstanceList* SPFirmwareVpd::instancesOf(std::size_t classIndex) {
  const auto list = kInstanceLists.at(classIndex);
  return list == nullptr ? nullptr : &(this->*list);
}

void SPFirmwareVpd::GetData(NamespaceHandle ns,
                            std::vector<boost::shared_ptr<ICIMClass>>& classes) {
  if (!ipmiFruProbed) DetermineIPMIFRUExist(ns);
  if (!dataGathered) collect(ns);
  for (const auto& cimClass : classes) publish(cimClass->GetName({}));
}

void SPFirmwareVpd::collect(NamespaceHandle ns) {
  getType11();  // without OEM strings the collection goes on
  if (getMachineType(&machineType).status != kStatusSuccess) {
    logProgress("Could not obtain (Global) Machine Type via SMBIOS.");
    machineType = "No (global) machine type found.";
  }
  gatherSPdata(ns);     // has logged each failure; what was collected is published
  dataGathered = true;  // only now: after an exception the next request collects again
  if (IscKVMMachine(machineType)) collectcKVM(ns);
}

void SPFirmwareVpd::collectcKVM(NamespaceHandle ns) {
  DeterminecKVMExist(ns);
  if (!cKVMExists) return;
  GetcKVMFirmwareVersion(ns);  // publishes by itself what it could read
  if (!cKVMFirmwareVersion.empty()) return;
  cKVMFirmwareVersion = kcKVMLevelUnread;
  CreatecKVMInstance(ns);
}

void SPFirmwareVpd::publish(std::string className) {
  if (publishedClassIndex(classNames, className)) return retrieveInstances(className);
  // Accepted and left empty: the tape collector publishes by itself.
  if (className == kUsbTapeClass || className == classNames[kSystemBiosIndex]) return;
  refuseClass(className);
}

void SPFirmwareVpd::retrieveInstances(std::string className) {
  const auto index = publishedClassIndex(classNames, className);
  if (!index || (*index == kVpdIndex && ipmiFruExists)) return;
  for (const auto& instance : *instancesOf(*index)) instance->AddToClass({});
}
