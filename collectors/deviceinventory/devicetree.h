// SPDX-License-Identifier: Apache-2.0
//
// The devices that the kernel knows, as sysfs shows them. A device is named by its path there; it
// may go at any time, so every answer may be that there is none.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace deviceinventory {

class DeviceTree {
 public:
  DeviceTree() = default;
  DeviceTree(const DeviceTree&) = delete;
  DeviceTree& operator=(const DeviceTree&) = delete;
  virtual ~DeviceTree() = default;

  // The paths of the devices of a subsystem and type, in no particular order. What cannot be listed
  // is left out.
  virtual std::vector<std::string> devices(const std::string& subsystem,
                                           const std::string& devtype) = 0;

  // Without the line feed at its end. nullopt: there is no such attribute, or no such device.
  virtual std::optional<std::string> attribute(const std::string& device,
                                               const std::string& name) = 0;

  // The nearest device above that is of a subsystem and type.
  virtual std::optional<std::string> parent(const std::string& device, const std::string& subsystem,
                                            const std::string& devtype) = 0;
};

}  // namespace deviceinventory
