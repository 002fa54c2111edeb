// SPDX-License-Identifier: Apache-2.0
//
// Cuts a raw table into its structures (DSP0134 6.1.2 and 6.1.3).
#include <algorithm>

#include "velhost/smbios.h"

namespace NKRXVEL20::host {

namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kLengthOffset = 1;
constexpr unsigned char kEndOfTable = 127;

using Bytes = std::span<const unsigned char>;

// The size of the structure that the table begins with; 0: the table does not hold one.
std::size_t firstStructureSize(Bytes table) {
  if (table.size() < kHeaderSize) return 0;
  const std::size_t length = table[kLengthOffset];
  if (length < kHeaderSize || length > table.size()) return 0;
  constexpr unsigned char kDoubleZero[] = {0, 0};
  const Bytes strings = table.subspan(length);
  const auto end =
      std::search(strings.begin(), strings.end(), std::begin(kDoubleZero), std::end(kDoubleZero));
  if (end == strings.end()) return table.size();
  return length + static_cast<std::size_t>(end - strings.begin()) + std::size(kDoubleZero);
}

}  // namespace

std::vector<SmbiosStructure> splitTable(Bytes table, TableLimits limits) {
  std::vector<SmbiosStructure> structures;
  while (!limits.structureCount || structures.size() < *limits.structureCount) {
    const std::size_t size = firstStructureSize(table);
    if (size == 0) break;
    structures.push_back({{table.begin(), table.begin() + static_cast<std::ptrdiff_t>(size)}, 0});
    if (limits.stopAtEndOfTable && table.front() == kEndOfTable) break;
    table = table.subspan(size);
  }
  return structures;
}

}  // namespace NKRXVEL20::host
