// SPDX-License-Identifier: Apache-2.0
//
// The component VPD records' decoders offer one constant beside SPFirmwareVpd's operations.
#pragma once

#include <cstdint>

#include "vel/export.h"

// The SPD byte that holds the total size of the SPD device (JEDEC SPD, byte 1). Exported for other
// programs; no code here reads it.
extern "C" VEL_API const std::int32_t DIMM_BYTES_TOTAL_OFFSET;
