// SPDX-License-Identifier: Apache-2.0
//
// The SMBIOS collector: KRXSG_SystemFirmware, KRXSG_ComputerSystem and KRXSG_PhysicalMemory from the
// machine's SMBIOS structures.
#pragma once

#include <map>
#include <string>

#include "collectors/support/companion.h"

namespace smbiosinventory {

inline constexpr char kName[] = "SMBIOSInventory";
inline constexpr char kVersion[] = "1.0";

// What is collected for each class.
std::map<std::string, collector::Collect> servedClasses();

}  // namespace smbiosinventory
