// SPDX-License-Identifier: Apache-2.0
//
// The first byte chooses the limits, the rest is the table. The structures must be the table's
// bytes, in their order and without a gap.
#include <algorithm>
#include <cstdint>

#include "tests/fuzz/require.h"
#include "velhost/smbios.h"

using namespace NKRXVEL20::host;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::span<const unsigned char> table(data + 1, size - 1);
  TableLimits limits;
  limits.stopAtEndOfTable = (*data & 1) != 0;
  if ((*data & 2) != 0) limits.structureCount = *data >> 2;

  const auto structures = splitTable(table, limits);
  require(!limits.structureCount || structures.size() <= *limits.structureCount,
          "no more than told");
  auto at = table.begin();
  for (const SmbiosStructure& structure : structures) {
    const auto& bytes = structure.bytes;
    require(bytes.size() >= 4 && bytes.size() <= static_cast<std::size_t>(table.end() - at),
            "a structure lies in the table");
    require(std::equal(bytes.begin(), bytes.end(), at), "it is what stands there");
    at += static_cast<std::ptrdiff_t>(bytes.size());
  }
  return 0;
}
