// SPDX-License-Identifier: Apache-2.0
//
// KRXSG_PhysicalMemory: the Memory Device structure (DSP0134 7.18, type 17) in each of its lengths.
#pragma once

#include <cstdint>
#include <optional>

#include "collectors/smbiosinventory/record.h"

namespace smbiosinventory {

inline constexpr std::uint8_t kMemoryDeviceType = 17;

// nullopt: the structure is too short to say whether there is a module.
std::optional<Record> physicalMemory(const Structure& structure);

}  // namespace smbiosinventory
