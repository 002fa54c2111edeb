// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/record.h"

#include <utility>

namespace smbiosinventory {

void decodeRows(const Structure& structure, std::span<const Row> rows, Record& record) {
  for (const Row& row : rows) {
    Value value = row.decode(structure, row.offset);
    if (value.index() != 0) record.push_back({row.property, std::move(value)});
  }
}

Value verbatimText(const Structure& structure, std::size_t offset) {
  const std::string_view found = structure.string(offset).value_or("");
  if (withoutTrailingBlanks(found).empty()) return {};
  return std::string(found);
}

Value text(const Structure& structure, std::size_t offset) {
  const std::string_view found = withoutTrailingBlanks(structure.string(offset).value_or(""));
  if (found.empty()) return {};
  return std::string(found);
}

std::string_view withoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

Value nameOf(std::uint64_t code, std::span<const char* const> names) {
  if (code >= names.size() || names[code] == nullptr) return {};
  return std::string(names[code]);
}

}  // namespace smbiosinventory
