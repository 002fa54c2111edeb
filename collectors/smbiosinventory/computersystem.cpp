// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/computersystem.h"

#include <algorithm>

namespace smbiosinventory {
namespace {

constexpr std::size_t kUuidSize = 16;
constexpr std::size_t kBoardTypeOffset = 0x0D;
constexpr std::uint64_t kMotherboard = 0x0A;
constexpr std::uint64_t kChassisTypeBits = 0x7F;  // the bit above them tells of a lock

// DSP0134 7.4.1.
constexpr const char* kChassisTypes[] = {
    nullptr,
    "Other",
    nullptr,
    "Desktop",
    "Low Profile Desktop",
    "Pizza Box",
    "Mini Tower",
    "Tower",
    "Portable",
    "Laptop",
    "Notebook",
    "Hand Held",
    "Docking Station",
    "All in One",
    "Sub Notebook",
    "Space-saving",
    "Lunch Box",
    "Main Server Chassis",
    "Expansion Chassis",
    "SubChassis",
    "Bus Expansion Chassis",
    "Peripheral Chassis",
    "RAID Chassis",
    "Rack Mount Chassis",
    "Sealed-case PC",
    "Multi-system chassis",
    "Compact PCI",
    "Advanced TCA",
    "Blade",
    "Blade Enclosure",
    "Tablet",
    "Convertible",
    "Detachable",
    "IoT Gateway",
    "Embedded PC",
    "Mini PC",
    "Stick PC",
};
static_assert(std::size(kChassisTypes) == 0x25, "the list ends with 24h, Stick PC");

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
  return nameOf(structure.number(offset, 1).value_or(0) & kChassisTypeBits, kChassisTypes);
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
