// SPDX-License-Identifier: Apache-2.0
//
// Values of CIM_SoftwareElement (DMTF CIM schema) that the firmware instances carry.
#pragma once

#include <cstdint>

namespace spfirmwarevpd {

// SoftwareElementState
inline constexpr std::uint16_t kStateExecutable = 2;
inline constexpr std::uint16_t kStateRunning = 3;

// TargetOperatingSystem
inline constexpr std::uint16_t kSystemOther = 1;
inline constexpr std::uint16_t kSystemNotApplicable = 66;

}  // namespace spfirmwarevpd
