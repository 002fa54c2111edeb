// SPDX-License-Identifier: Apache-2.0
//
// One SMBIOS structure (DSP0134 6.1): a formatted area of as many bytes as its Length says, and the
// strings behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace smbiosinventory {

using Bytes = std::span<const unsigned char>;

class Structure {
 public:
  // `bytes` begins with the structure, may have anything behind it or less than it should, and
  // outlives the object.
  explicit Structure(Bytes bytes);

  // A field of the formatted area; empty when the area ends before the field does.
  Bytes field(std::size_t offset, std::size_t size) const;

  // The same as a number, the lowest byte first.
  std::optional<std::uint64_t> number(std::size_t offset, std::size_t size) const;

  // The string whose number stands at the offset. nullopt: no such field, number 0, no such string.
  std::optional<std::string_view> string(std::size_t offset) const;

 private:
  Bytes formatted_;
  std::string_view strings_;  // from behind the formatted area on
};

}  // namespace smbiosinventory
