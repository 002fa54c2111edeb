// SPDX-License-Identifier: Apache-2.0
#include "entrypoint.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>

namespace NKRXVEL20::host {

namespace {

using Bytes = std::span<const unsigned char>;

// What dmidecode reads of a dump before it looks for an anchor; no entry point is longer.
constexpr std::size_t kLongest = 0x20;

constexpr std::string_view kLegacyAnchor = "_DMI_";
constexpr std::size_t kLegacySize = 0x0F;

// Offsets in the legacy record, which is the second half of a 32-bit entry point as well.
constexpr std::size_t kLegacyTableLength = 0x06;
constexpr std::size_t kLegacyTableAddress = 0x08;
constexpr std::size_t kLegacyStructureCount = 0x0C;

constexpr std::size_t kLengthOf32 = 0x05;
constexpr std::size_t kLegacyIn32 = 0x10;
// DSP0134 says 0x1F; its version 2.1 said 0x1E by mistake, and firmware followed.
constexpr std::size_t kShortest32 = 0x1E;

constexpr std::size_t kLengthOf64 = 0x06;
constexpr std::size_t kMaximumSizeOf64 = 0x0C;
constexpr std::size_t kTableAddressOf64 = 0x10;
constexpr std::size_t kShortest64 = 0x18;

std::uint64_t number(Bytes bytes, std::size_t offset, std::size_t width) {
  const Bytes field = bytes.subspan(offset, width);
  return std::accumulate(field.rbegin(), field.rend(), std::uint64_t{0},
                         [](std::uint64_t value, unsigned char byte) { return value << 8 | byte; });
}

bool beginsWith(Bytes bytes, std::string_view anchor) {
  return bytes.size() >= anchor.size() && std::equal(anchor.begin(), anchor.end(), bytes.begin());
}

// The first `size` bytes, which must be there and add up to zero.
Bytes checked(Bytes bytes, std::size_t size, const std::string& what) {
  if (size > bytes.size()) throw DmiDumpError("it ends inside " + what);
  const Bytes record = bytes.first(size);
  if (std::accumulate(record.begin(), record.end(), 0U) % 256 != 0) {
    throw DmiDumpError("the checksum of " + what + " is wrong");
  }
  return record;
}

// An entry point that tells its own length.
Bytes checkedByLength(Bytes bytes, std::size_t lengthOffset, std::size_t shortest,
                      const std::string& what) {
  if (bytes.size() <= lengthOffset) throw DmiDumpError("it ends inside " + what);
  const std::size_t length = bytes[lengthOffset];
  if (length < shortest || length > kLongest) {
    throw DmiDumpError("the length of " + what + " is wrong: " + std::to_string(length));
  }
  return checked(bytes, length, what);
}

EntryPoint readLegacy(Bytes bytes, const std::string& what) {
  const Bytes record = checked(bytes, kLegacySize, what);
  EntryPoint entry;
  entry.tableAddress = number(record, kLegacyTableAddress, 4);
  entry.tableLength = number(record, kLegacyTableLength, 2);
  // dmidecode takes a count of zero as one that is not known.
  if (const std::uint64_t count = number(record, kLegacyStructureCount, 2); count != 0) {
    entry.limits.structureCount = static_cast<std::size_t>(count);
  }
  return entry;
}

EntryPoint read32(Bytes bytes) {
  checkedByLength(bytes, kLengthOf32, kShortest32, "the 32-bit entry point");
  const Bytes second = bytes.subspan(kLegacyIn32);
  if (!beginsWith(second, kLegacyAnchor)) {
    throw DmiDumpError("the 32-bit entry point has no _DMI_ anchor in its second half");
  }
  return readLegacy(second, "the second half of the 32-bit entry point");
}

EntryPoint read64(Bytes bytes) {
  const Bytes record = checkedByLength(bytes, kLengthOf64, kShortest64, "the 64-bit entry point");
  EntryPoint entry;
  entry.tableAddress = number(record, kTableAddressOf64, 8);
  entry.tableLength = number(record, kMaximumSizeOf64, 4);
  entry.lengthIsMaximum = true;
  entry.limits.stopAtEndOfTable = true;
  return entry;
}

}  // namespace

EntryPoint readEntryPoint(Bytes bytes) {
  if (beginsWith(bytes, "_SM3_")) return read64(bytes);
  if (beginsWith(bytes, "_SM_")) return read32(bytes);
  if (beginsWith(bytes, kLegacyAnchor)) return readLegacy(bytes, "the legacy entry point");
  throw DmiDumpError("it does not begin with an SMBIOS entry point (_SM3_, _SM_ or _DMI_)");
}

}  // namespace NKRXVEL20::host
