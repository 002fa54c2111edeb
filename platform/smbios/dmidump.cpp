// SPDX-License-Identifier: Apache-2.0
//
// Reads a DMI dump the way `dmidecode --from-dump` does.
#include <algorithm>

#include "entrypoint.h"
#include "velhost/smbios.h"

namespace NKRXVEL20::host {

DmiDumpError::~DmiDumpError() = default;

SmbiosTable parseDmiDump(std::span<const unsigned char> dump) {
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
  table.structures = splitTable(behind.first(static_cast<std::size_t>(length)), entry.limits);
  return table;
}

}  // namespace NKRXVEL20::host
