// SPDX-License-Identifier: Apache-2.0
#include "host/report/partlines.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

struct Line {
  std::string_view name;                       // on the picture; empty: the value speaks for itself
  std::array<std::string_view, 4> properties;  // the first of them that is told
};

constexpr Line kLines[] = {
    {"Maker", {"Vendor", "Manufacturer", "ProductManufacturer", "BoardManufacturer"}},
    {"Product", {"ProductName", "BoardProductName"}},
    {"Part", {"PartNumber", "ProductPartNumber", "BoardPartNumber", "ChassisPartNumber"}},
    {"Serial", {"SerialNumber", "ProductSerialNumber", "BoardSerialNumber", "ChassisSerialNumber"}},
    {"FRU", {"FRUNumber"}},
    {"", {"Description"}},
    {"Note", {"Notes"}},
};

const Fact* firstTold(const std::vector<Fact>& facts, std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    const auto fact = std::ranges::find(facts, name, &Fact::name);
    if (!name.empty() && fact != facts.end()) return &*fact;
  }
  return nullptr;
}

// "32 GiB" of a whole number of them.
std::string sizeText(std::uint64_t bytes) {
  constexpr std::string_view kUnits[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  const auto* unit = std::begin(kUnits);
  for (; bytes != 0 && bytes % 1024 == 0 && unit + 1 != std::end(kUnits); ++unit) bytes /= 1024;
  return std::to_string(bytes) + ' ' + std::string(*unit);
}

// "32 GiB DDR5", of a slot that is filled.
std::string memoryOf(const PublishedInstance& instance, const std::vector<Fact>& properties) {
  std::string memory;
  for (const auto& [name, value] : instance.properties) {
    if (name == "Capacity" && value.ToUint64() != 0) memory = sizeText(value.ToUint64());
  }
  const Fact* const type = firstTold(properties, std::array<std::string_view, 1>{"MemoryType"});
  if (type != nullptr) memory += (memory.empty() ? "" : " ") + type->value;
  return memory;
}

}  // namespace

std::vector<Fact> partLines(const PublishedInstance& instance,
                            const std::vector<Fact>& properties) {
  std::vector<Fact> lines;
  if (std::string memory = memoryOf(instance, properties); !memory.empty()) {
    lines.push_back({"", std::move(memory)});
  }
  for (const Line& line : kLines) {
    const Fact* const fact = firstTold(properties, line.properties);
    if (fact != nullptr) lines.push_back({std::string(line.name), fact->value});
  }
  return lines;
}

}  // namespace velhost
