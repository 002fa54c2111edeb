// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/computersystem.h"

#include <algorithm>

#include "collectors/support/chassistypes.h"

namespace smbiosinventory {
namespace {

constexpr std::size_t kUuidSize = 16;
constexpr std::size_t kBoardTypeOffset = 0x0D;
constexpr std::uint64_t kMotherboard = 0x0A;

// In the order in which the bytes are written (DSP0134 7.2.1): the first three fields have their
// lowest byte first. Behind which of them a hyphen stands.
struct UuidByte {
  std::size_t offset;
  bool endsGroup;
};

constexpr UuidByte kUuidOrder[kUuidSize] = {
    {3, false},  {2, false},  {1, false},  {0, true},   {5, false},  {4, true},
    {7, false},  {6, true},   {8, false},  {9, true},   {10, false}, {11, false},
    {12, false}, {13, false}, {14, false}, {15, false},
};

std::string uuidText(Bytes bytes) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  std::string text;
  for (const UuidByte& next : kUuidOrder) {
    text += kHexDigits[bytes[next.offset] >> 4U];
    text += kHexDigits[bytes[next.offset] & 0xFU];
    if (next.endsGroup) text += '-';
  }
  return text;
}

bool isAll(Bytes bytes, unsigned char value) {
  return std::ranges::all_of(bytes, [value](unsigned char byte) { return byte == value; });
}

// All ones: not there but can be set; all zeros: not there.
Value uuid(const Structure& structure, std::size_t offset) {
  const Bytes bytes = structure.field(offset, kUuidSize);
  if (bytes.empty() || isAll(bytes, 0x00) || isAll(bytes, 0xFF)) return {};
  return uuidText(bytes);
}

Value chassisType(const Structure& structure, std::size_t offset) {
  const auto type = static_cast<std::uint8_t>(structure.number(offset, 1).value_or(0));
  const std::string_view name = collector::chassisTypeName(type);
  if (name.empty()) return {};
  return std::string(name);
}

constexpr Row kSystemRows[] = {
    // property      offset
    {"Manufacturer", 0x04, text}, {"ProductName", 0x05, text}, {"Version", 0x06, text},
    {"SerialNumber", 0x07, text}, {"UUID", 0x08, uuid},        {"SKUNumber", 0x19, text},
    {"Family", 0x1A, text},
};

constexpr Row kChassisRows[] = {
    // property             offset
    {"ChassisType", 0x05, chassisType},
    {"ChassisSerialNumber", 0x07, text},
    {"ChassisAssetTag", 0x08, text},
};

constexpr Row kBoardRows[] = {
    // property           offset
    {"BoardManufacturer", 0x04, text},
    {"BoardProduct", 0x05, text},
    {"BoardSerialNumber", 0x07, text},
};

}  // namespace

void addSystem(const Structure& structure, Record& record) {
  decodeRows(structure, kSystemRows, record);
}

void addChassis(const Structure& structure, Record& record) {
  decodeRows(structure, kChassisRows, record);
}

void addBoard(const Structure& structure, Record& record) {
  decodeRows(structure, kBoardRows, record);
}

bool isMotherboard(const Structure& structure) {
  return structure.number(kBoardTypeOffset, 1) == kMotherboard;
}

}  // namespace smbiosinventory
