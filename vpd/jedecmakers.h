// SPDX-License-Identifier: Apache-2.0
//
// Memory makers by their identity code of JEDEC JEP106. Knows no framework, and is a library of its
// own: collectors of other kinds name makers alike.
#pragma once

#include <cstddef>
#include <string>

namespace spfirmwarevpd {

// The maker whose code stands behind `continuations` continuation codes (0 for bank 1), with or
// without the code's parity bit. Empty when the table names nobody.
std::string jedecMaker(std::size_t continuations, unsigned char code);

// The same for the bytes of an identity: continuation codes, then the code. No more than seven bytes
// are read.
std::string jedecMaker(const unsigned char* identity);

}  // namespace spfirmwarevpd
