// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/structure.h"

#include <algorithm>

namespace smbiosinventory {
namespace {

constexpr std::size_t kLengthOffset = 1;

std::size_t formattedSize(Bytes bytes) {
  if (bytes.size() <= kLengthOffset) return 0;
  return std::min<std::size_t>(bytes[kLengthOffset], bytes.size());
}

std::string_view characters(Bytes bytes) {
  // Characters may stand for any bytes.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

Structure::Structure(Bytes bytes)
    : formatted_(bytes.first(formattedSize(bytes))),
      strings_(characters(bytes.subspan(formatted_.size()))) {}

Bytes Structure::field(std::size_t offset, std::size_t size) const {
  if (offset > formatted_.size() || formatted_.size() - offset < size) return {};
  return formatted_.subspan(offset, size);
}

std::optional<std::uint64_t> Structure::number(std::size_t offset, std::size_t size) const {
  const Bytes bytes = field(offset, size);
  if (bytes.empty()) return std::nullopt;
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) value |= std::uint64_t{bytes[i]} << (8 * i);
  return value;
}

// An empty string ends the set.
std::optional<std::string_view> Structure::string(std::size_t offset) const {
  std::string_view rest = strings_;
  for (auto left = number(offset, 1).value_or(0); left > 0; --left) {
    const std::string_view text = rest.substr(0, rest.find('\0'));
    if (text.empty()) break;
    if (left == 1) return text;
    rest.remove_prefix(std::min(text.size() + 1, rest.size()));
  }
  return std::nullopt;
}

}  // namespace smbiosinventory
