// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/deviceid.h"

#include <algorithm>

#include "collectors/ipmiinventory/ipmitext.h"

namespace ipmiinventory {
namespace {

constexpr std::size_t kShortest = 11;
constexpr std::size_t kAuxiliaryOffset = 11;
constexpr std::size_t kAuxiliarySize = 4;
constexpr std::uint8_t kSdrRepositoryDevice = 0x02;
constexpr std::size_t kGuidSize = 16;

std::uint16_t number16(ByteSpan bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8U);
}

// The minor part has two digits, as hexadecimal ones where they are no decimal ones.
std::string firmwareVersion(std::uint8_t major, std::uint8_t minor) {
  return std::to_string(major & 0x7FU) + '.' + hexByte(minor);
}

// 51h is 1.5.
std::string ipmiVersion(std::uint8_t version) {
  return std::to_string(version & 0x0FU) + '.' + std::to_string(version >> 4U);
}

// 20 bits. 0 is unspecified, all ones are reserved.
std::optional<std::uint64_t> manufacturerId(ByteSpan bytes) {
  const std::uint64_t number = number16(bytes) | (bytes[2] & 0x0FU) << 16U;
  if (number == 0 || number == 0xFFFFF) return std::nullopt;
  return number;
}

std::optional<std::uint16_t> productId(ByteSpan bytes) {
  const std::uint16_t number = number16(bytes);
  if (number == 0 || number == 0xFFFF) return std::nullopt;
  return number;
}

}  // namespace

std::optional<DeviceId> decodeDeviceId(ByteSpan data) {
  if (data.size() < kShortest) return std::nullopt;
  DeviceId id;
  id.deviceId = data[0];
  id.deviceRevision = data[1] & 0x0FU;
  id.firmwareVersion = firmwareVersion(data[2], data[3]);
  id.ipmiVersion = ipmiVersion(data[4]);
  id.hasSdrRepository = (data[5] & kSdrRepositoryDevice) != 0;
  id.manufacturerId = manufacturerId(data.subspan(6));
  id.productId = productId(data.subspan(9));
  if (data.size() >= kAuxiliaryOffset + kAuxiliarySize) {
    id.auxiliaryFirmwareRevision = hexBytes(data.subspan(kAuxiliaryOffset, kAuxiliarySize));
  }
  return id;
}

std::string guidText(ByteSpan data) {
  if (data.size() < kGuidSize) return {};
  const ByteSpan guid = data.first(kGuidSize);
  const auto is = [](std::uint8_t value) {
    return [value](std::uint8_t byte) { return byte == value; };
  };
  if (std::ranges::all_of(guid, is(0x00)) || std::ranges::all_of(guid, is(0xFF))) return {};
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < kGuidSize; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[guid[kGuidSize - 1 - i] >> 4U];
    text += kDigits[guid[kGuidSize - 1 - i] & 0x0FU];
  }
  return text;
}

}  // namespace ipmiinventory
