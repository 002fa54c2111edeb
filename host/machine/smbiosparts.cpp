// SPDX-License-Identifier: Apache-2.0
#include "host/machine/smbiosparts.h"

#include <algorithm>

namespace velhost {
namespace {

constexpr std::size_t kLengthOffset = 1;

}  // namespace

Bytes wholeStructure(const SmbiosParts& parts) {
  Bytes bytes;
  bytes.reserve(kSmbiosHeaderSize + parts.data.size());
  bytes.push_back(parts.type);
  bytes.push_back(static_cast<unsigned char>(kSmbiosHeaderSize + parts.data.size()));
  bytes.push_back(static_cast<unsigned char>(parts.handle & 0xFFU));
  bytes.push_back(static_cast<unsigned char>(parts.handle >> 8U));
  bytes.insert(bytes.end(), parts.data.begin(), parts.data.end());
  for (const std::string& text : parts.strings) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
  }
  if (parts.strings.empty()) bytes.push_back(0);  // an empty set is two zero bytes
  bytes.push_back(0);
  return bytes;
}

std::optional<SmbiosParts> takeApart(const Bytes& structure) {
  Bytes bytes = structure;
  const auto formatted = formattedArea(bytes);
  if (formatted.size() < kSmbiosHeaderSize) return std::nullopt;
  const auto data = formatted.subspan(kSmbiosHeaderSize);
  SmbiosParts parts{formatted[0],
                    static_cast<std::uint16_t>(formatted[2] | formatted[3] << 8U),
                    {data.begin(), data.end()},
                    {}};
  for (const auto text : stringSet(bytes)) parts.strings.emplace_back(text.begin(), text.end());
  if (wholeStructure(parts) != structure) return std::nullopt;
  return parts;
}

std::span<unsigned char> formattedArea(std::span<unsigned char> structure) {
  if (structure.size() <= kLengthOffset) return structure;
  return structure.first(std::min<std::size_t>(structure[kLengthOffset], structure.size()));
}

std::vector<std::span<unsigned char>> stringSet(std::span<unsigned char> structure) {
  std::vector<std::span<unsigned char>> texts;
  auto rest = structure.subspan(formattedArea(structure).size());
  while (!rest.empty() && rest.front() != 0) {
    const auto end = std::ranges::find(rest, static_cast<unsigned char>(0));
    const auto size = static_cast<std::size_t>(end - rest.begin());
    texts.push_back(rest.first(size));
    rest = rest.subspan(std::min(size + 1, rest.size()));
  }
  return texts;
}

}  // namespace velhost
