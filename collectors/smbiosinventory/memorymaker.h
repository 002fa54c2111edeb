// SPDX-License-Identifier: Apache-2.0
//
// Makers of memory modules by their JEDEC JEP106 code, in the forms in which firmware has it. All
// give the empty text for what is no code or names nobody.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace smbiosinventory {

// The two bytes of a module's SPD, the first one the lower: how many continuation codes there are
// before the code, and the code, both with or without their parity bit.
std::string makerOfModuleId(std::uint16_t id);

// Hexadecimal digits for 2 to 8 bytes: those two bytes ("80CE", "80CE000080CE"), the same as one number
// ("0xCE80"), or the eight bytes of older modules ("7F98000000000000").
std::string makerOfIdText(std::string_view text);

}  // namespace smbiosinventory
