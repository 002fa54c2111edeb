// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frucommonheader.h"

#include <algorithm>
#include <numeric>

namespace ipmiinventory {
namespace {

constexpr std::uint8_t kVersionMask = 0x0F;
constexpr std::uint8_t kKnownVersion = 1;
constexpr std::size_t kFirstOffset = 1;

bool isAll(ByteSpan bytes, std::uint8_t value) {
  return std::ranges::all_of(bytes, [value](std::uint8_t byte) { return byte == value; });
}

std::string headerFault(ByteSpan bytes) {
  if (bytes.size() < kCommonHeaderSize) return "too short";
  if (isAll(bytes, 0x00) || isAll(bytes, 0xFF)) return "blank";
  if (std::string fault = versionFault(bytes.front()); !fault.empty()) return fault;
  return hasGoodChecksum(bytes) ? "" : "wrong checksum";
}

}  // namespace

std::string versionFault(std::uint8_t byte) {
  const int version = byte & kVersionMask;
  if (version == kKnownVersion) return {};
  return "version " + std::to_string(version) + " is not known";
}

bool hasGoodChecksum(ByteSpan bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), 0U) % 256 == 0;
}

FruCommonHeader parseCommonHeader(ByteSpan bytes) {
  FruCommonHeader header;
  header.fault = headerFault(bytes.first(std::min(bytes.size(), kCommonHeaderSize)));
  if (!header.fault.empty()) return header;
  for (std::size_t i = 0; i < header.areas.size(); ++i) {
    header.areas[i] = bytes[kFirstOffset + i] * kFruUnit;
  }
  return header;
}

std::size_t endOfArea(const FruCommonHeader& header, std::size_t offset, std::size_t end) {
  for (const std::size_t area : header.areas) {
    if (area > offset) end = std::min(end, area);
  }
  return end;
}

}  // namespace ipmiinventory
