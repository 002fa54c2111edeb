// SPDX-License-Identifier: Apache-2.0
//
// SMBIOS structures written down in a test.
#pragma once

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "collectors/smbiosinventory/record.h"

namespace smbiosinventory {

using OwnedBytes = std::vector<unsigned char>;

// A structure as it stands in a table: `fields` are the bytes behind the header.
inline OwnedBytes structureBytes(unsigned char type, const OwnedBytes& fields,
                                 const std::vector<std::string>& strings = {}) {
  OwnedBytes bytes(4 + fields.size());
  bytes[0] = type;
  bytes[1] = static_cast<unsigned char>(bytes.size());
  std::ranges::copy(fields, bytes.begin() + 4);
  for (const std::string& text : strings) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
  }
  if (strings.empty()) bytes.push_back(0);
  bytes.push_back(0);
  return bytes;
}

// Fields of nothing but zeros, but for the bytes that stand at `offset` of the structure.
inline OwnedBytes fieldsWith(std::size_t length, std::size_t offset, const OwnedBytes& bytes) {
  OwnedBytes fields(length - 4, 0);
  for (std::size_t i = 0; i < bytes.size(); ++i) fields[offset - 4 + i] = bytes[i];
  return fields;
}

struct Shown {
  std::string operator()(std::monostate /*nothing*/) const { return "nothing"; }
  std::string operator()(const std::string& text) const { return '"' + text + '"'; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::uint64_t number) const { return std::to_string(number); }
  std::string operator()(const std::chrono::year_month_day& date) const {
    return std::to_string(static_cast<int>(date.year())) + '-' +
           std::to_string(static_cast<unsigned>(date.month())) + '-' +
           std::to_string(static_cast<unsigned>(date.day()));
  }
};

// NAME=VALUE, a property a line; texts in quotation marks.
inline std::vector<std::string> shown(const Record& record) {
  std::vector<std::string> lines;
  for (const auto& [name, value] : record) {
    lines.push_back(std::string(name) + '=' + std::visit(Shown(), value));
  }
  return lines;
}

// The value of one property; "nothing" when it is not set.
inline std::string valueOf(const Record& record, std::string_view name) {
  for (const auto& [found, value] : record) {
    if (found == name) return std::visit(Shown(), value);
  }
  return "nothing";
}

}  // namespace smbiosinventory
