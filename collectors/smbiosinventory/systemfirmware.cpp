// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/systemfirmware.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace smbiosinventory {
namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr std::uint64_t kKilobyte = 1024;
constexpr std::uint64_t kMegabyte = 1024 * kKilobyte;
constexpr std::uint64_t kGigabyte = 1024 * kMegabyte;

constexpr std::size_t kExtendedRomSizeOffset = 0x18;
constexpr std::uint64_t kSeeExtendedRomSize = 0xFF;
constexpr std::uint64_t kNotSupported = 0xFF;
constexpr std::uint64_t kUefiBit = 1U << 3U;

std::optional<unsigned> digits(std::string_view text) {
  unsigned value = 0;
  if (!std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// By the standard two digits are 19yy, but firmware of this century wrote them too, and there is
// none from before 1951.
unsigned fullYear(unsigned number, std::size_t digitCount) {
  if (digitCount > 2) return number;
  return number > 50 ? 1900 + number : 2000 + number;
}

// MM/DD/YY or MM/DD/YYYY.
std::optional<year_month_day> dateOf(std::string_view text) {
  if ((text.size() != 8 && text.size() != 10) || text[2] != '/' || text[5] != '/') return {};
  const auto monthNumber = digits(text.substr(0, 2));
  const auto dayNumber = digits(text.substr(3, 2));
  const auto yearNumber = digits(text.substr(6));
  if (!monthNumber || !dayNumber || !yearNumber) return {};
  const unsigned full = fullYear(*yearNumber, text.size() - 6);
  return year_month_day(year(static_cast<int>(full)), month(*monthNumber), day(*dayNumber));
}

Value releaseDate(const Structure& structure, std::size_t offset) {
  const auto date = dateOf(withoutTrailingBlanks(structure.string(offset).value_or("")));
  if (!date || !date->ok() || date->year() < year(1)) return {};
  return *date;
}

// The major release, then the minor one.
Value revision(const Structure& structure, std::size_t offset) {
  const auto major = structure.number(offset, 1);
  const auto minor = structure.number(offset + 1, 1);
  if (!minor || *major == kNotSupported || *minor == kNotSupported) return {};
  return std::to_string(*major) + '.' + std::to_string(*minor);
}

// Bits 14 and 15 are the unit: MB, GB, two that are reserved.
Value extendedRomSize(std::uint64_t field) {
  const std::uint64_t unit = field >> 14U;
  const std::uint64_t count = field & 0x3FFFU;
  if (unit > 1 || count == 0) return {};
  return count * (unit == 0 ? kMegabyte : kGigabyte);
}

// Before the field was extended, FFh was a size like any other: 16 MB.
Value romSize(const Structure& structure, std::size_t offset) {
  const auto blocks = structure.number(offset, 1);
  if (!blocks) return {};
  const auto extended = structure.number(kExtendedRomSizeOffset, 2);
  if (*blocks == kSeeExtendedRomSize && extended) return extendedRomSize(*extended);
  return (*blocks + 1) * 64 * kKilobyte;
}

Value isUefi(const Structure& structure, std::size_t offset) {
  const auto characteristics = structure.number(offset, 1);
  if (!characteristics) return {};
  return (*characteristics & kUefiBit) != 0;
}

constexpr Row kFirmwareRows[] = {
    // property                    offset
    {"Vendor", 0x04, text},
    {"Version", 0x05, verbatimText},
    {"ReleaseDate", 0x08, releaseDate},
    {"SystemFirmwareRevision", 0x14, revision},
    {"EmbeddedControllerRevision", 0x16, revision},
    {"ROMSize", 0x09, romSize},
    {"UEFI", 0x13, isUefi},
};

}  // namespace

Record systemFirmware(const Structure& structure, std::size_t number) {
  Record record = {{"InstanceID", "KRXSG:SystemFirmware:" + std::to_string(number)}};
  decodeRows(structure, kFirmwareRows, record);
  return record;
}

}  // namespace smbiosinventory
