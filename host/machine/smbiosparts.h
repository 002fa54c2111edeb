// SPDX-License-Identifier: Apache-2.0
//
// An SMBIOS structure's bytes and the parts that they are made of (DSP0134, 6.1.2 and 6.1.3).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/text/hextext.h"

namespace velhost {

inline constexpr std::size_t kSmbiosHeaderSize = 4;

struct SmbiosParts {
  std::uint8_t type = 0;
  std::uint16_t handle = 0;
  Bytes data;  // the formatted area behind the header
  std::vector<std::string> strings;

  friend bool operator==(const SmbiosParts&, const SmbiosParts&) = default;
};

// The whole structure, header and string set included.
Bytes wholeStructure(const SmbiosParts& parts);

// Nothing for bytes that no parts give: a header or a string set cut short, bytes behind the set.
std::optional<SmbiosParts> takeApart(const Bytes& structure);

// The formatted area, header included, as far as the structure has it.
std::span<unsigned char> formattedArea(std::span<unsigned char> structure);

// The texts of the string set without their zero bytes, string number 1 first. The last may lack
// its zero byte.
std::vector<std::span<unsigned char>> stringSet(std::span<unsigned char> structure);

}  // namespace velhost
