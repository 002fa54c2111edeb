// SPDX-License-Identifier: Apache-2.0
//
// Character classes of ASCII, whatever the locale: firmware texts know no other.
#pragma once

namespace NKRXVEL20 {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLowerCase(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool isUpperCase(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isAlphaNumeric(char c) { return isDigit(c) || isLowerCase(c) || isUpperCase(c); }

}  // namespace NKRXVEL20
