// SPDX-License-Identifier: Apache-2.0
//
// The four functions that plug-ins read structures with.
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "vel/smbios.h"
#include "velhost/smbios.h"

namespace NKRXVEL20 {

// The table is shared, so that a host may set the next one while a plug-in still walks this one.
struct TSmBiosHandle {
  std::shared_ptr<const host::SmbiosTable> table;
  std::optional<int> type;   // that the last smBiosGetFirst asked for
  std::size_t position = 0;  // of the structure to look at next
};

namespace {

constexpr int kCannotOpen = 1;

std::shared_ptr<const host::SmbiosTable>& currentTable() {
  static std::shared_ptr<const host::SmbiosTable> table;
  return table;
}

// Handles belong to the library: one that a caller never closes is given back with the library.
std::vector<std::unique_ptr<TSmBiosHandle>>& openHandles() {
  static std::vector<std::unique_ptr<TSmBiosHandle>> handles;
  return handles;
}

// A structure without its type byte is of no type.
bool isOfType(const host::SmbiosStructure& structure, int type) {
  return !structure.bytes.empty() && structure.bytes.front() == type;
}

int readNext(TSmBiosHandle& handle, unsigned char* buffer, int capacity) {
  const auto& structures = handle.table->structures;
  while (handle.position < structures.size()) {
    const host::SmbiosStructure& structure = structures[handle.position++];
    if (!isOfType(structure, *handle.type)) continue;
    // Whoever reads "no more" finds his buffer as it was, also when a structure comes with it.
    if (structure.status != kSmBiosNoMore) {
      const auto room = static_cast<std::size_t>(std::max(capacity, 0));
      std::copy_n(structure.bytes.begin(), std::min(structure.bytes.size(), room), buffer);
    }
    return structure.status;
  }
  return handle.table->endStatus;
}

}  // namespace

int smBiosLoad(TPluginManagerProvider* /*provider*/, TSmBiosHandle** handle) {
  const auto& table = currentTable();
  if (!table) return kCannotOpen;
  if (table->loadStatus != 0) return table->loadStatus;
  openHandles().push_back(std::make_unique<TSmBiosHandle>(TSmBiosHandle{table, std::nullopt, 0}));
  *handle = openHandles().back().get();
  return 0;
}

// The size is the caller's variable by contract.
// NOLINTNEXTLINE(readability-non-const-parameter)
int smBiosGetFirst(TSmBiosHandle* handle, int type, unsigned char* buffer, int* size) {
  if (handle == nullptr) return kSmBiosReadFailed;
  handle->type = type;
  handle->position = 0;
  return readNext(*handle, buffer, *size);
}

// NOLINTNEXTLINE(readability-non-const-parameter)
int smBiosGetNext(TSmBiosHandle* handle, unsigned char* buffer, int* size) {
  if (handle == nullptr || !handle->type) return kSmBiosReadFailed;
  return readNext(*handle, buffer, *size);
}

int smBiosClose(TSmBiosHandle** handle) {
  const TSmBiosHandle* const closed = std::exchange(*handle, nullptr);
  std::erase_if(openHandles(), [closed](const auto& open) { return open.get() == closed; });
  return 0;
}

namespace host {

void setSmbiosTable(std::optional<SmbiosTable> table) {
  currentTable() = table ? std::make_shared<const SmbiosTable>(*std::move(table)) : nullptr;
}

std::shared_ptr<const SmbiosTable> smbiosTable() { return currentTable(); }

}  // namespace host

}  // namespace NKRXVEL20
