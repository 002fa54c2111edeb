// SPDX-License-Identifier: Apache-2.0
//
// CIM texts are Unicode (DMTF DSP0004), here in UTF-8; what firmware gives may be any bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vel/export.h"

namespace NKRXVEL20 {

// How many bytes the UTF-8 sequence at the start of the text has (RFC 3629); 0 when there is none.
VEL_API std::size_t sequenceLength(std::string_view text) noexcept;

VEL_API bool isUtf8(std::string_view text) noexcept;

// Each byte that is no part of a UTF-8 sequence becomes one U+FFFD.
VEL_API std::string toUtf8(std::string_view text);

}  // namespace NKRXVEL20
