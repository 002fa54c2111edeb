// SPDX-License-Identifier: Apache-2.0
//
// Reads a DMI dump the way `dmidecode --from-dump` does.
#include <algorithm>

#include "entrypoint.h"
#include "velhost/smbios.h"

namespace NKRXVEL20::host {

DmiDumpError::~DmiDumpError() = default;

namespace {

// One more than allowed shows that there are too many, without reading them all.
TableLimits boundedLimits(TableLimits limits, std::optional<std::size_t> most) {
  if (most && limits.structureCount.value_or(*most + 1) > *most) limits.structureCount = *most + 1;
  return limits;
}

}  // namespace

SmbiosTable parseDmiDump(std::span<const unsigned char> dump,
                         std::optional<std::size_t> mostStructures) {
  const EntryPoint entry = readEntryPoint(dump);
  if (entry.tableAddress > dump.size()) {
    throw DmiDumpError("its table begins behind its end, at " + std::to_string(entry.tableAddress));
  }
  const auto behind = dump.subspan(static_cast<std::size_t>(entry.tableAddress));
  if (entry.tableLength > behind.size() && !entry.lengthIsMaximum) {
    throw DmiDumpError("its table of " + std::to_string(entry.tableLength) +
                       " bytes runs past its end");
  }
  const auto length = std::min<std::uint64_t>(entry.tableLength, behind.size());
  SmbiosTable table;
  table.structures = splitTable(behind.first(static_cast<std::size_t>(length)),
                                boundedLimits(entry.limits, mostStructures));
  if (mostStructures && table.structures.size() > *mostStructures) {
    throw DmiDumpError("its table has more than " + std::to_string(*mostStructures) +
                       " structures");
  }
  return table;
}

}  // namespace NKRXVEL20::host
