// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/smbiosinventory.h"

#include <optional>
#include <utility>

#include "collectors/smbiosinventory/computersystem.h"
#include "collectors/smbiosinventory/physicalmemory.h"
#include "collectors/smbiosinventory/systemfirmware.h"
#include "collectors/smbiosinventory/tables.h"

using namespace NKRXVEL20;

namespace smbiosinventory {
namespace {

std::vector<Record> systemFirmwares() {
  std::vector<Record> records;
  Tables().forEach(kFirmwareType, [&](const Structure& structure) {
    records.push_back(systemFirmware(structure, records.size() + 1));
  });
  return records;
}

std::vector<Record> physicalMemories() {
  std::vector<Record> records;
  Tables().forEach(kMemoryDeviceType, [&](const Structure& structure) {
    if (auto record = physicalMemory(structure)) records.push_back(*std::move(record));
  });
  return records;
}

// What the first structure of a type tells; nullopt when there is none.
std::optional<Record> firstOf(Tables& tables, std::uint8_t type,
                              void (*add)(const Structure&, Record&)) {
  std::optional<Record> first;
  tables.forEach(type, [&](const Structure& structure) {
    if (!first) add(structure, first.emplace());
  });
  return first;
}

// The first motherboard, or else the first board: servers list risers and mezzanines as well.
std::optional<Record> mainBoard(Tables& tables) {
  std::optional<Record> found;
  bool isMain = false;
  tables.forEach(kBoardType, [&](const Structure& structure) {
    if (isMain || (found && !isMotherboard(structure))) return;
    isMain = isMotherboard(structure);
    addBoard(structure, found.emplace());
  });
  return found;
}

// One system, if any of its structures is there. Its name says nothing that could change.
std::vector<Record> computerSystems() {
  Tables tables;
  const std::optional<Record> parts[] = {firstOf(tables, kSystemType, addSystem),
                                         firstOf(tables, kChassisType, addChassis),
                                         mainBoard(tables)};
  Record system = {{"Name", "System"}};
  bool isThere = false;
  for (const auto& part : parts) {
    if (!part) continue;
    isThere = true;
    system.insert(system.end(), part->begin(), part->end());
  }
  if (!isThere) return {};
  return {system};
}

TCIMDateTime midnight(const std::chrono::year_month_day& date) {
  TCIMDateTime value;
  fdrSetDateTime(&value, static_cast<int>(date.year()),
                 static_cast<int>(static_cast<unsigned>(date.month())),
                 static_cast<int>(static_cast<unsigned>(date.day())), 0, 0, 0, 0, 0);
  return value;
}

struct ToCIM {
  TCIMValue operator()(std::monostate /*nothing*/) const { return {}; }
  TCIMValue operator()(const std::chrono::year_month_day& date) const {
    return TCIMValue(midnight(date));
  }
  template <class Plain>
  TCIMValue operator()(const Plain& value) const {
    return TCIMValue(value);
  }
};

std::vector<collector::InstanceHandle> instancesOf(const std::vector<Record>& records,
                                                   const collector::CreateInstance& create) {
  std::vector<collector::InstanceHandle> instances;
  for (const Record& record : records) {
    const auto instance = instances.emplace_back(create());
    for (const auto& [name, value] : record) {
      instance->SetProperty(std::string(name), std::visit(ToCIM(), value), {});
    }
  }
  return instances;
}

template <auto records>
collector::Collect collect() {
  return [](const auto& create) { return instancesOf(records(), create); };
}

}  // namespace

std::map<std::string, collector::Collect> servedClasses() {
  return {{"KRXSG_SystemFirmware", collect<systemFirmwares>()},
          {"KRXSG_ComputerSystem", collect<computerSystems>()},
          {"KRXSG_PhysicalMemory", collect<physicalMemories>()}};
}

}  // namespace smbiosinventory
