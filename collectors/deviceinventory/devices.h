// SPDX-License-Identifier: Apache-2.0
//
// The devices of a tree, as instances tell them. An attribute that cannot be read leaves its text
// out, a device of which nothing can be read is left out itself. Both lists are in the order of the
// devices' paths.
#pragma once

#include <string>
#include <vector>

#include "collectors/deviceinventory/devicetree.h"

namespace deviceinventory {

struct Device {
  std::string deviceId;
  std::string description;  // empty: the device gives none
};

// Each USB device, hubs too.
std::vector<Device> usbDevices(DeviceTree& tree);

// Each tape drive, whatever it is attached to.
std::vector<Device> tapeDrives(DeviceTree& tree);

}  // namespace deviceinventory
