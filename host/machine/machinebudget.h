// SPDX-License-Identifier: Apache-2.0
//
// What a machine file may ask of the program that reads it: far more than any machine needs, and
// little enough that a hostile file is refused before it has cost a second or the memory.
// docs/machine-file.md tells it to people, machines/machine.schema.json to editors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velhost {

inline constexpr std::size_t kMostLevels = 32;       // lists and objects in each other
inline constexpr std::size_t kMostValues = 250'000;  // in the whole file
inline constexpr std::size_t kMostBytes = std::size_t{64} << 20U;  // of all byte fields and dumps
inline constexpr std::uint32_t kLargestPiece = 1U << 20U;          // of one "zeros" or "size"

inline constexpr std::int32_t kMostNodes = 255;        // collectors number nodes with one byte
inline constexpr std::int32_t kMostComponents = 1024;  // of one kind
inline constexpr std::int64_t kMostComponentsInSum = 262'144;  // of all kinds and SPs
inline constexpr std::size_t kMostStructures = 65'536;         // handles are 16-bit numbers
inline constexpr std::uint32_t kLongestLatency = 60'000'000;   // a minute

}  // namespace velhost
