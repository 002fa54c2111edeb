// SPDX-License-Identifier: Apache-2.0
//
// Bytes as tests write them.
#pragma once

#include <numeric>
#include <string>
#include <string_view>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

// "01 02": hex pairs with blanks between them.
inline Bytes hex(std::string_view text) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes.push_back(
        static_cast<std::uint8_t>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

inline std::string hexText(ByteSpan bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += "0123456789ABCDEF"[byte >> 4U];
    text += "0123456789ABCDEF"[byte & 0x0FU];
  }
  return text;
}

// Zeros up to the last byte of a unit of eight, and there the checksum.
inline Bytes checked(Bytes bytes) {
  bytes.resize((bytes.size() / 8 + 1) * 8);
  bytes.back() = static_cast<std::uint8_t>(0U - std::accumulate(bytes.begin(), bytes.end(), 0U));
  return bytes;
}

inline Bytes operator+(Bytes bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

inline Bytes operator+(Bytes bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
  return bytes;
}

}  // namespace ipmiinventory
