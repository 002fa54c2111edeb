// SPDX-License-Identifier: Apache-2.0
//
// The BIOS Information structure (SMBIOS DSP0134 7.1, type 0).
#pragma once

#include <cstdint>
#include <string>

#include "smbios/smbioswalk.h"

namespace spfirmwarevpd {

struct BiosInformation {
  std::string vendor;
  std::string version;
  std::string releaseDate;
  std::uint64_t loadedStartingAddress;
  std::uint64_t loadedEndingAddress;
};

// Texts are reached only within the first 100 bytes of the string set.
BiosInformation decodeBiosInformation(const SmbiosBuffer& structure);

}  // namespace spfirmwarevpd
