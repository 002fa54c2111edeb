// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/sdrrecord.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "collectors/ipmiinventory/ipmitext.h"

namespace ipmiinventory {
namespace {

constexpr std::size_t kTypeOffset = 3;
constexpr std::size_t kLengthOffset = 4;
constexpr std::size_t kAddressOffset = 5;  // in bits 7 to 1
constexpr std::uint8_t kBmcAddress = 0x20;

constexpr std::uint8_t kFruDeviceLocator = 0x11;
constexpr std::size_t kFruDeviceIdOffset = 6;
constexpr std::size_t kAccessOffset = 7;  // bit 7: by FRU commands; bits 4 and 3: LUN
constexpr std::uint8_t kLogicalDevice = 0x80;
constexpr std::size_t kDeviceTypeOffset = 10;
constexpr std::size_t kModifierOffset = 11;

constexpr std::uint8_t kControllerLocator = 0x12;
constexpr std::size_t kCapabilitiesOffset = 8;
constexpr std::uint8_t kFruInventoryDevice = 0x08;

// The same in both.
constexpr std::size_t kEntityIdOffset = 12;
constexpr std::size_t kEntityInstanceOffset = 13;
constexpr std::size_t kNameOffset = 15;
constexpr std::size_t kShortestLocator = kNameOffset + 1;

// Device type modifiers of FRU devices, an EEPROM's (08h to 0Fh) and the BMC's own (10h).
struct OtherContents {
  std::uint8_t modifier;
  const char* name;
};
constexpr OtherContents kOtherContents[] = {
    {0x01, "memory module's SPD data"},
    {0x03, "processor's information ROM"},
};

// clang-format off
constexpr std::string_view kEntityNames[] = {
    /* 00h */ "", "Other", "Unknown", "Processor",
    /* 04h */ "Disk or disk bay", "Peripheral bay", "System management module", "System board",
    /* 08h */ "Memory module", "Processor module", "Power supply", "Add-in card",
    /* 0Ch */ "Front panel board", "Back panel board", "Power system board", "Drive backplane",
    /* 10h */ "System internal expansion board", "Other system board", "Processor board",
              "Power unit",
    /* 14h */ "Power module", "Power management board", "Chassis back panel board",
              "System chassis",
    /* 18h */ "Sub-chassis", "Other chassis board", "Disk drive bay", "Peripheral bay",
    /* 1Ch */ "Device bay", "Fan", "Cooling unit", "Cable or interconnect",
    /* 20h */ "Memory device", "System management software", "System firmware",
              "Operating system",
    /* 24h */ "System bus", "Group", "Remote management communication device",
              "External environment",
    /* 28h */ "Battery", "Processing blade", "Connectivity switch", "Processor and memory module",
    /* 2Ch */ "I/O module", "Processor and I/O module", "Management controller firmware",
              "IPMI channel",
    /* 30h */ "PCI bus", "PCI Express bus", "SCSI bus", "SATA or SAS bus",
    /* 34h */ "Processor front-side bus", "Real-time clock", "", "Air inlet",
};
// clang-format on
static_assert(std::size(kEntityNames) == 0x38);

std::uint8_t at(ByteSpan record, std::size_t offset) { return record[offset]; }

bool isTheBmcs(ByteSpan record) { return (at(record, kAddressOffset) & 0xFEU) == kBmcAddress; }

// The length and encoding of SDR texts differ from those of FRU fields.
std::string nameOf(ByteSpan record) {
  const std::uint8_t typeLength = at(record, kNameOffset);
  ByteSpan name = record.subspan(kNameOffset + 1);
  name = name.first(std::min<std::size_t>(name.size(), typeLength & 0x1FU));
  constexpr std::string (*kTexts[])(ByteSpan) = {unicodeText, bcdPlusText, sixBitText, latin1Text};
  return kTexts[typeLength >> 6U](name);
}

const char* otherContents(std::uint8_t deviceType, std::uint8_t modifier) {
  if (deviceType < 0x08 || deviceType > 0x10) return nullptr;
  const auto* const row = std::ranges::find(kOtherContents, modifier, &OtherContents::modifier);
  return row == std::end(kOtherContents) ? nullptr : row->name;
}

void setEntity(ByteSpan record, FruLocator& locator) {
  if (at(record, kEntityIdOffset) == 0) return;  // unspecified
  locator.entityId = at(record, kEntityIdOffset);
  locator.entityInstance = at(record, kEntityInstanceOffset);
}

}  // namespace

std::optional<SdrHeader> parseSdrHeader(ByteSpan record) {
  if (record.size() < kSdrHeaderSize) return std::nullopt;
  const std::uint8_t type = at(record, kTypeOffset);
  return SdrHeader{static_cast<std::uint16_t>(at(record, 0) | at(record, 1) << 8U),
                   type == kFruDeviceLocator || type == kControllerLocator,
                   kSdrHeaderSize + at(record, kLengthOffset)};
}

std::optional<FruLocator> parseFruLocator(ByteSpan record) {
  if (record.size() < kShortestLocator || !isTheBmcs(record)) return std::nullopt;
  FruLocator locator;
  if (at(record, kTypeOffset) == kFruDeviceLocator) {
    if ((at(record, kAccessOffset) & kLogicalDevice) == 0) return std::nullopt;
    locator.fruDeviceId = at(record, kFruDeviceIdOffset);
    locator.lun = at(record, kAccessOffset) >> 3U & 0x03U;
    locator.otherContents =
        otherContents(at(record, kDeviceTypeOffset), at(record, kModifierOffset));
  } else if (at(record, kTypeOffset) != kControllerLocator ||
             (at(record, kCapabilitiesOffset) & kFruInventoryDevice) == 0) {
    return std::nullopt;
  }
  locator.name = nameOf(record);
  setEntity(record, locator);
  return locator;
}

std::string entityName(std::uint8_t entityId) {
  return std::string(entityId < std::size(kEntityNames) ? kEntityNames[entityId] : "");
}

}  // namespace ipmiinventory
