// SPDX-License-Identifier: Apache-2.0
//
// Bytes as pairs of hex digits.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

using Bytes = std::vector<unsigned char>;

// what() says what keeps a text from being hex pairs.
class HexTextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Takes hex pairs, either case, with blanks before, between and behind them. Throws HexTextError.
Bytes bytesOfHex(std::string_view text);

// Upper-case pairs without blanks.
std::string hexOfBytes(std::span<const unsigned char> bytes);

// The same with a blank between the pairs, for people.
std::string hexPairs(std::span<const unsigned char> bytes);

}  // namespace velhost
