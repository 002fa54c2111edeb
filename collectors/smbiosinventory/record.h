// SPDX-License-Identifier: Apache-2.0
//
// What is told of a structure: a table has a row for each property, and each row makes a value of
// the field at its offset.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "collectors/smbiosinventory/structure.h"

namespace smbiosinventory {

// monostate: nothing is known, so the property is not set.
using Value =
    std::variant<std::monostate, std::string, bool, std::uint64_t, std::chrono::year_month_day>;

struct Property {
  std::string_view name;
  Value value;

  friend bool operator==(const Property&, const Property&) = default;
};

// The properties that are set, in the order of the table.
using Record = std::vector<Property>;

struct Row {
  const char* property;
  std::size_t offset;
  Value (*decode)(const Structure& structure, std::size_t offset);
};

// Appends what the rows make of a structure.
void decodeRows(const Structure& structure, std::span<const Row> rows, Record& record);

// The string of that number as it is; nothing when there is none, or when it is all blanks.
Value verbatimText(const Structure& structure, std::size_t offset);

// The same without the blanks at its end.
Value text(const Structure& structure, std::size_t offset);

std::string_view withoutTrailingBlanks(std::string_view text);

// The name at that place of a list. Nothing behind its end, and where the list has none: the codes
// that are reserved or mean "Unknown".
Value nameOf(std::uint64_t code, std::span<const char* const> names);

}  // namespace smbiosinventory
