// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace velhost {

// Bytes in rows for people: the place of the first one in decimal, hexadecimal pairs, the same as
// text between bars, in which a point stands for what is no ASCII. Rows have sixteen bytes where
// `width` has room for them behind `indent` blanks, otherwise eight. No more than `most` bytes; a
// line says how many are left out.
std::string hexDump(std::span<const unsigned char> bytes, std::size_t firstPlace,
                    std::size_t indent, std::size_t width, std::size_t most);

}  // namespace velhost
