// SPDX-License-Identifier: Apache-2.0
//
// The BIOS Information structure (SMBIOS DSP0134 7.1, type 0).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "smbios/smbioswalk.h"

namespace spfirmwarevpd {

// Texts are reached only within the first 100 bytes of the string set.
inline constexpr std::size_t kBiosStringSetSize = 100;

struct BiosInformation {
  std::array<char, kBiosStringSetSize> strings;
  int vendor;       // string number
  int version;      // string number
  int releaseDate;  // string number
  std::uint64_t loadedStartingAddress;
  std::uint64_t loadedEndingAddress;
};

BiosInformation decodeBiosInformation(const SmbiosBuffer& structure);

}  // namespace spfirmwarevpd
