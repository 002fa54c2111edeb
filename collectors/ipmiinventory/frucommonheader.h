// SPDX-License-Identifier: Apache-2.0
//
// The first bytes of a FRU device, which say where its areas are (Platform Management FRU Information
// Storage Definition 1.0 rev. 1.3, 8).
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

// All offsets and lengths in a FRU device count eight bytes each.
inline constexpr std::size_t kFruUnit = 8;
inline constexpr std::size_t kCommonHeaderSize = 8;

struct FruCommonHeader {
  std::string fault;  // what is wrong with it, in words; empty: nothing

  // In bytes; 0: there is no such area. Internal use, chassis, board, product, multi-record.
  std::array<std::size_t, 5> areas{};
};

// Of kCommonHeaderSize bytes; fewer are a fault.
FruCommonHeader parseCommonHeader(ByteSpan bytes);

// Where the area behind the one at `offset` begins; `end` when it is the last one.
std::size_t endOfArea(const FruCommonHeader& header, std::size_t offset, std::size_t end);

// The format version that every part of a FRU device begins with: the one that is known is 1. What is
// wrong with it, in words.
std::string versionFault(std::uint8_t byte);

// Its bytes, the checksum among them, have a sum of 0 modulo 256.
bool hasGoodChecksum(ByteSpan bytes);

}  // namespace ipmiinventory
