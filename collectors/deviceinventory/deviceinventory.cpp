// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/deviceinventory.h"

#include "collectors/deviceinventory/devices.h"

using NKRXVEL20::TCIMValue;

namespace deviceinventory {

namespace {

std::vector<collector::InstanceHandle> instancesOf(const std::vector<Device>& devices,
                                                   const collector::CreateInstance& create) {
  std::vector<collector::InstanceHandle> instances;
  for (const Device& device : devices) {
    const auto instance = instances.emplace_back(create());
    instance->SetProperty("DeviceID", TCIMValue(device.deviceId), {});
    if (device.description.empty()) continue;
    instance->SetProperty("Description", TCIMValue(device.description), {});
  }
  return instances;
}

}  // namespace

std::map<std::string, collector::Collect> servedClasses(const std::shared_ptr<DeviceTree>& tree) {
  return {
      {"KRXSG_USBDevice",
       [tree](const auto& create) { return instancesOf(usbDevices(*tree), create); }},
      {"KRXSG_TapeDrive",
       [tree](const auto& create) { return instancesOf(tapeDrives(*tree), create); }},
  };
}

}  // namespace deviceinventory
