// SPDX-License-Identifier: Apache-2.0
//
// KRXSG_SystemFirmware: the BIOS Information structure (DSP0134 7.1, type 0).
#pragma once

#include <cstddef>
#include <cstdint>

#include "collectors/smbiosinventory/record.h"

namespace smbiosinventory {

inline constexpr std::uint8_t kFirmwareType = 0;

// `number` counts the machine's structures of the type, from 1.
Record systemFirmware(const Structure& structure, std::size_t number);

}  // namespace smbiosinventory
