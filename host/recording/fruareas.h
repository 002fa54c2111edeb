// SPDX-License-Identifier: Apache-2.0
//
// The areas of a FRU device and the fields in them (IPMI Platform Management FRU Information Storage
// Definition 1.0 rev. 1.3, 8 and 10 to 13), as far as hiding values needs them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace velhost {

enum class FruAreaKind { kChassis, kBoard, kProduct };

struct FruArea {
  FruAreaKind kind;
  std::size_t offset;
  std::size_t size;  // as far as the device's bytes go; at least the area's head
};

// None where the common header is wrong.
std::vector<FruArea> fruAreas(std::span<const unsigned char> device);

// The area is there to its end, and its bytes have a sum of 0 modulo 256.
bool hasGoodChecksum(std::span<const unsigned char> device, const FruArea& area);

struct FruField {
  unsigned char encoding;  // 0 binary, 1 BCD plus, 2 six-bit ASCII, 3 by the area's language
  std::size_t offset;      // in the device
  std::size_t size;
};

// Up to the end mark; the last one may be cut by the area's end.
std::vector<FruField> fruFields(std::span<const unsigned char> device, const FruArea& area);

// The texts of encoding 3 are of one byte a character, otherwise of two.
bool isEnglish(std::span<const unsigned char> device, const FruArea& area);

}  // namespace velhost
