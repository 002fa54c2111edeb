// SPDX-License-Identifier: Apache-2.0
//
// KRXSG_ComputerSystem: the System, Baseboard and Chassis Information structures (DSP0134 7.2 to 7.4,
// types 1 to 3).
#pragma once

#include <cstdint>

#include "collectors/smbiosinventory/record.h"

namespace smbiosinventory {

inline constexpr std::uint8_t kSystemType = 1;
inline constexpr std::uint8_t kBoardType = 2;
inline constexpr std::uint8_t kChassisType = 3;

// What each of them tells of the system.
void addSystem(const Structure& structure, Record& record);
void addChassis(const Structure& structure, Record& record);
void addBoard(const Structure& structure, Record& record);

bool isMotherboard(const Structure& structure);

}  // namespace smbiosinventory
