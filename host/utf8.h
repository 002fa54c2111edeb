// SPDX-License-Identifier: Apache-2.0
//
// Texts come from firmware and may hold any byte; what leaves the program is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velhost {

// How many bytes the UTF-8 sequence at the start of the text has (RFC 3629); 0 when there is none.
std::size_t sequenceLength(std::string_view text) noexcept;

bool isUtf8(std::string_view text) noexcept;

// Each byte that is no part of a UTF-8 sequence becomes one U+FFFD.
std::string toUtf8(std::string_view text);

// One line for people: control characters and bytes that are no UTF-8 are shown as escapes.
std::string visible(std::string_view text);

// How many characters a text has that is UTF-8.
std::size_t characterCount(std::string_view text) noexcept;

}  // namespace velhost
