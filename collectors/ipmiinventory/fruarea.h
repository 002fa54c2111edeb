// SPDX-License-Identifier: Apache-2.0
//
// The areas of a FRU device that say what the unit is (Platform Management FRU Information Storage
// Definition 1.0 rev. 1.3, 10 to 12), by the properties that take their fields.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

struct FruAreaLayout {
  const char* name;          // as Notes call it
  std::size_t place;         // in the common header
  const char* byteProperty;  // of the byte behind the area's length; null: the language
  std::size_t dateOffset;    // 0: none
  const char* dateProperty;  // of it
  std::size_t fieldsOffset;  // of the first field
  std::span<const char* const> properties;  // of the fields; those behind them are custom ones
};

// Chassis, board, product: in the order in which their properties are published.
std::span<const FruAreaLayout> fruAreaLayouts();

struct FruProperty {
  const char* name;
  std::string text;  // not empty; a date is a CIM timestamp

  bool operator==(const FruProperty&) const = default;
};

struct FruAreaContent {
  std::vector<FruProperty> properties;
  std::string fault;  // what is wrong with the area, in words; empty: nothing
};

// The bytes of an area, by its first two; 0 when there are fewer.
std::size_t areaLength(ByteSpan start);

// What is wrong with an area that begins so, with `room` bytes of the device from its start on;
// empty: nothing.
std::string areaStartFault(ByteSpan start, std::size_t room);

// Of a whole area. One with a wrong start or checksum has no properties.
FruAreaContent decodeArea(const FruAreaLayout& layout, ByteSpan area);

// A CIM timestamp; empty for 0 minutes, which mean that there is no date.
std::string fruDate(std::uint32_t minutesSince1996);

}  // namespace ipmiinventory
