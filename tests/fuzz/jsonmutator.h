// SPDX-License-Identifier: Apache-2.0
//
// Changes JSON documents as documents, so that most of what a target is given gets past the parser. A text
// of hexadecimal digits is changed as the bytes that it stands for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace fuzz {

// The document with one to four changes; the text itself is changed where it is no JSON, and now and then
// where it is. The result may be longer than `most`.
std::string mutated(std::string_view text, std::size_t most, unsigned seed);

// The first document with a piece of the second in the place of one of its own.
std::string crossed(std::string_view text, std::string_view other, unsigned seed);

// Puts it in the fuzzer's buffer, cut to `most`; how long it is.
std::size_t put(std::string_view text, std::uint8_t* buffer, std::size_t most);

}  // namespace fuzz
