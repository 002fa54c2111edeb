// SPDX-License-Identifier: Apache-2.0
//
// Texts come from firmware and may hold any byte; what leaves the program is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vel/utf8.h"

namespace velhost {

using NKRXVEL20::isUtf8;
using NKRXVEL20::sequenceLength;
using NKRXVEL20::toUtf8;

// Whether the byte is one of a UTF-8 sequence but its first.
bool isContinuation(char byte) noexcept;

// The character that a whole UTF-8 sequence stands for.
char32_t codePoint(std::string_view sequence) noexcept;

// One line for people: bytes that are no UTF-8 and characters that a terminal obeys or does not show
// (controls, direction overrides, zero-width characters) are shown as escapes.
std::string visible(std::string_view text);

// The same for a JSON text, whose value stays what it is: only characters above U+007E are escaped,
// as \u202E, since JSON has no others of that kind raw but its own line feeds.
std::string escapeUnseen(std::string_view text);

// At most `most` characters of a text that is UTF-8: "..." stands for the middle of a longer one, as
// either end of a complaint says something.
std::string shortened(std::string_view text, std::size_t most);

// How many characters a text has that is UTF-8.
std::size_t characterCount(std::string_view text) noexcept;

}  // namespace velhost
