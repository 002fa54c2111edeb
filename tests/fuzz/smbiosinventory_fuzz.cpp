// SPDX-License-Identifier: Apache-2.0
//
// Any bytes, taken for a structure of each type that is decoded. What stands behind the structure's
// end makes no difference, texts are texts of the structure, and dates are dates.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "collectors/smbiosinventory/computersystem.h"
#include "collectors/smbiosinventory/physicalmemory.h"
#include "collectors/smbiosinventory/systemfirmware.h"
#include "tests/fuzz/require.h"

using namespace smbiosinventory;

namespace {

using fuzz::require;

Record everything(Bytes bytes) {
  const Structure structure(bytes);
  Record record = systemFirmware(structure, 1);
  addSystem(structure, record);
  addChassis(structure, record);
  addBoard(structure, record);
  const Record memory = physicalMemory(structure).value_or(Record{});
  record.insert(record.end(), memory.begin(), memory.end());
  record.push_back({"IsMotherboard", isMotherboard(structure)});
  return record;
}

// Behind the two zeros that end the string set; the end of the bytes when they are not there.
std::size_t sizeOf(Bytes bytes) {
  if (bytes.size() < 4 || bytes[1] < 4) return std::min<std::size_t>(bytes.size(), 4);
  for (std::size_t at = bytes[1]; at + 1 < bytes.size(); ++at) {
    if (bytes[at] == 0 && bytes[at + 1] == 0) return at + 2;
  }
  return bytes.size();
}

bool isText(const Property& property, Bytes bytes) {
  const auto* const text = std::get_if<std::string>(&property.value);
  constexpr std::string_view kFromTexts[] = {"Vendor", "ProductName", "DeviceLocator", "PartNumber",
                                             "ChassisAssetTag"};
  if (text == nullptr || std::ranges::find(kFromTexts, property.name) == std::end(kFromTexts)) {
    return true;
  }
  const std::string characters(bytes.begin(), bytes.end());
  return !text->empty() && text->back() != ' ' && characters.find(*text) != std::string::npos;
}

bool isDate(const Property& property) {
  const auto* const date = std::get_if<std::chrono::year_month_day>(&property.value);
  return date == nullptr || date->ok();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<unsigned char> bytes(data, data + size);
  const Record record = everything(bytes);
  const std::vector<unsigned char> alone(data, data + sizeOf(bytes));
  require(record == everything(alone), "what stands behind makes no difference");
  for (const Property& property : record) {
    require(isText(property, bytes) && isDate(property), property.name);
  }
  return 0;
}
