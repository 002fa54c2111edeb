// SPDX-License-Identifier: Apache-2.0
//
// Texts that do not take a byte a character, as ASCII and back. A text that is put back has as many
// characters as were read, each of them one that the notation has.
#pragma once

#include <span>

#include "host/text/hextext.h"

namespace velhost {

// UTF-16, the lower byte first: the lower bytes.
Bytes readWide(std::span<const unsigned char> field);
void writeWide(const Bytes& text, std::span<unsigned char> field);

// BCD plus: 0 to 9, blank, dash, point, colon, comma, underscore; two in a byte.
Bytes readBcdPlus(std::span<const unsigned char> field);
void writeBcdPlus(const Bytes& text, std::span<unsigned char> field);

// Six-bit ASCII: 20h to 5Fh, four in three bytes. Bits that are left over stay.
Bytes readSixBit(std::span<const unsigned char> field);
void writeSixBit(const Bytes& text, std::span<unsigned char> field);

}  // namespace velhost
