// SPDX-License-Identifier: Apache-2.0
#include "smbios/biosinformation.h"

namespace spfirmwarevpd {

namespace {

constexpr std::size_t kVendorOffset = 4;                  // string number
constexpr std::size_t kVersionOffset = 5;                 // string number
constexpr std::size_t kStartingAddressSegmentOffset = 6;  // 2 bytes, little-endian
constexpr std::size_t kReleaseDateOffset = 8;             // string number
constexpr std::size_t kRomSizeOffset = 9;

// Both addresses are the field shifted by 16, not by the 4 of a segment: readers of the two
// properties know them so.
constexpr unsigned kAddressShift = 16;

}  // namespace

BiosInformation decodeBiosInformation(const SmbiosBuffer& structure) {
  const std::uint64_t segmentLow = structure[kStartingAddressSegmentOffset];
  const std::uint64_t segmentHigh = structure[kStartingAddressSegmentOffset + 1];
  const std::uint64_t romSize = structure[kRomSizeOffset];
  return {.strings = copyStringSet<kBiosStringSetSize>(structure),
          .vendor = structure[kVendorOffset],
          .version = structure[kVersionOffset],
          .releaseDate = structure[kReleaseDateOffset],
          .loadedStartingAddress = (segmentLow | segmentHigh << 8U) << kAddressShift,
          .loadedEndingAddress = romSize << kAddressShift};
}

}  // namespace spfirmwarevpd
