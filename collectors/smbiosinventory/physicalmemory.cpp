// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/physicalmemory.h"

#include "collectors/smbiosinventory/memorymaker.h"

namespace smbiosinventory {
namespace {

constexpr std::uint64_t kKilobyte = 1024;
constexpr std::uint64_t kMegabyte = 1024 * kKilobyte;

constexpr std::size_t kSizeOffset = 0x0C;
constexpr std::uint64_t kNoModule = 0;
constexpr std::uint64_t kUnknownSize = 0xFFFF;
constexpr std::uint64_t kSeeExtendedSize = 0x7FFF;
constexpr std::uint64_t kInKilobytes = 0x8000;
constexpr std::size_t kExtendedSizeOffset = 0x1C;  // in MB

constexpr std::uint64_t kUnknownSpeed = 0;
constexpr std::uint64_t kSeeExtendedSpeed = 0xFFFF;
constexpr std::size_t kExtendedSpeedOffset = 0x54;

constexpr std::size_t kModuleMakerOffset = 0x2C;

constexpr std::uint64_t kWithoutReservedBit = 0x7FFFFFFF;  // of the extended fields

// DSP0134 7.18.1.
constexpr const char* kFormFactors[] = {
    nullptr,   "Other",  nullptr,
    "SIMM",    "SIP",    "Chip",
    "DIP",     "ZIP",    "Proprietary Card",
    "DIMM",    "TSOP",   "Row of chips",
    "RIMM",    "SODIMM", "SRIMM",
    "FB-DIMM", "Die",    "CAMM",
};
static_assert(std::size(kFormFactors) == 0x12, "the list ends with 11h, CAMM");

// DSP0134 7.18.2.
constexpr const char* kMemoryTypes[] = {
    nullptr,        "Other",  nullptr,  "DRAM",
    "EDRAM",        "VRAM",   "SRAM",   "RAM",
    "ROM",          "FLASH",  "EEPROM", "FEPROM",
    "EPROM",        "CDRAM",  "3DRAM",  "SDRAM",
    "SGRAM",        "RDRAM",  "DDR",    "DDR2",
    "DDR2 FB-DIMM", nullptr,  nullptr,  nullptr,
    "DDR3",         "FBD2",   "DDR4",   "LPDDR",
    "LPDDR2",       "LPDDR3", "LPDDR4", "Logical non-volatile device",
    "HBM",          "HBM2",   "DDR5",   "LPDDR5",
    "HBM3",
};
static_assert(std::size(kMemoryTypes) == 0x25, "the list ends with 24h, HBM3");

// No structure is decoded that ends before its size.
Value isPopulated(const Structure& structure, std::size_t offset) {
  return structure.number(offset, 2) != kNoModule;
}

// A structure that ends before the extended size has 7FFFh as a size like any other.
Value capacity(const Structure& structure, std::size_t offset) {
  const std::uint64_t size = structure.number(offset, 2).value_or(kUnknownSize);
  if (size == kUnknownSize) return {};
  const auto extended = structure.number(kExtendedSizeOffset, 4);
  if (size == kSeeExtendedSize && extended) return (*extended & kWithoutReservedBit) * kMegabyte;
  if ((size & kInKilobytes) != 0) return (size & ~kInKilobytes) * kKilobyte;
  return size * kMegabyte;
}

Value formFactor(const Structure& structure, std::size_t offset) {
  return nameOf(structure.number(offset, 1).value_or(0), kFormFactors);
}

Value memoryType(const Structure& structure, std::size_t offset) {
  return nameOf(structure.number(offset, 1).value_or(0), kMemoryTypes);
}

Value speed(const Structure& structure, std::size_t offset) {
  std::uint64_t value = structure.number(offset, 2).value_or(kUnknownSpeed);
  if (value == kSeeExtendedSpeed) {
    value = structure.number(kExtendedSpeedOffset, 4).value_or(kUnknownSpeed) & kWithoutReservedBit;
  }
  if (value == kUnknownSpeed) return {};
  return value;
}

// What an empty slot has for texts of a module ("NO DIMM") describes none.
Value moduleText(const Structure& structure, std::size_t offset) {
  if (structure.number(kSizeOffset, 2) == kNoModule) return {};
  return text(structure, offset);
}

Value moduleMaker(const Structure& structure) {
  const auto id = structure.number(kModuleMakerOffset, 2).value_or(0);
  std::string maker = makerOfModuleId(static_cast<std::uint16_t>(id));
  if (maker.empty()) return {};
  return maker;
}

// A maker's name in words is newer than the one that goes with his code.
Value manufacturer(const Structure& structure, std::size_t offset) {
  if (structure.number(kSizeOffset, 2) == kNoModule) return {};
  Value written = text(structure, offset);
  const std::string* const words = std::get_if<std::string>(&written);
  if (words == nullptr) return moduleMaker(structure);
  std::string maker = makerOfIdText(*words);
  return maker.empty() ? written : maker;
}

constexpr Row kMemoryRows[] = {
    // property       offset
    {"DeviceLocator", 0x10, text},
    {"BankLocator", 0x11, text},
    {"Populated", kSizeOffset, isPopulated},
    {"Capacity", kSizeOffset, capacity},
    {"FormFactor", 0x0E, formFactor},
    {"MemoryType", 0x12, memoryType},
    {"Speed", 0x15, speed},
    {"Manufacturer", 0x17, manufacturer},
    {"PartNumber", 0x1A, moduleText},
    {"SerialNumber", 0x18, moduleText},
    {"AssetTag", 0x19, moduleText},
};

}  // namespace

std::optional<Record> physicalMemory(const Structure& structure) {
  if (structure.field(kSizeOffset, 2).empty()) return std::nullopt;
  Record record;
  decodeRows(structure, kMemoryRows, record);
  return record;
}

}  // namespace smbiosinventory
