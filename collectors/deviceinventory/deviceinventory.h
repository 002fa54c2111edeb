// SPDX-License-Identifier: Apache-2.0
//
// The device collector: KRXSG_USBDevice and KRXSG_TapeDrive from the devices that the kernel knows.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "collectors/deviceinventory/devicetree.h"
#include "collectors/support/companion.h"

namespace deviceinventory {

inline constexpr char kName[] = "DeviceInventory";
inline constexpr char kVersion[] = "1.0";

// What is collected for each class, of the devices in the tree.
std::map<std::string, collector::Collect> servedClasses(const std::shared_ptr<DeviceTree>& tree);

}  // namespace deviceinventory
