// SPDX-License-Identifier: Apache-2.0
//
// The names of chassis types (DMTF DSP0134 7.4.1). FRU information has the same numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace collector {

// From 1. None for the type that means "Unknown".
inline constexpr std::string_view kChassisTypes[] = {
    "Other",
    "",
    "Desktop",
    "Low Profile Desktop",
    "Pizza Box",
    "Mini Tower",
    "Tower",
    "Portable",
    "Laptop",
    "Notebook",
    "Hand Held",
    "Docking Station",
    "All in One",
    "Sub Notebook",
    "Space-saving",
    "Lunch Box",
    "Main Server Chassis",
    "Expansion Chassis",
    "SubChassis",
    "Bus Expansion Chassis",
    "Peripheral Chassis",
    "RAID Chassis",
    "Rack Mount Chassis",
    "Sealed-case PC",
    "Multi-system chassis",
    "Compact PCI",
    "Advanced TCA",
    "Blade",
    "Blade Enclosure",
    "Tablet",
    "Convertible",
    "Detachable",
    "IoT Gateway",
    "Embedded PC",
    "Mini PC",
    "Stick PC",
};
static_assert(std::size(kChassisTypes) == 0x24, "the list ends with 24h, Stick PC");

// Empty for a type that is unknown or reserved. The highest bit tells of a lock and does not count.
constexpr std::string_view chassisTypeName(std::uint8_t type) {
  const std::size_t number = type & 0x7FU;
  if (number < 1 || number > std::size(kChassisTypes)) return {};
  return kChassisTypes[number - 1];
}

}  // namespace collector
