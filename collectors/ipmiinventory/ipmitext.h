// SPDX-License-Identifier: Apache-2.0
//
// The ways in which a BMC writes texts (IPMI 2.0, 43.15; Platform Management FRU Information Storage
// Definition 1.0 rev. 1.3, 13). Texts are UTF-8 on one line: they end at the first zero, have no
// blanks around them, and a control character in them is a blank.
#pragma once

#include <string>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

// Two digits, in upper case.
std::string hexByte(std::uint8_t byte);

// Two digits a byte.
std::string hexBytes(ByteSpan bytes);

// The same, but nothing when all bytes are zero.
std::string hexDigits(ByteSpan bytes);

// Two characters a byte, the higher four bits first.
std::string bcdPlusText(ByteSpan bytes);

// Four characters in three bytes, the lowest bits first; bits that are left over are none.
std::string sixBitText(ByteSpan bytes);

std::string latin1Text(ByteSpan bytes);

// UTF-16, the lower byte first. What is no character, an odd byte too, is U+FFFD.
std::string unicodeText(ByteSpan bytes);

}  // namespace ipmiinventory
