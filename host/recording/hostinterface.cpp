// SPDX-License-Identifier: Apache-2.0
#include "host/recording/hostinterface.h"

#include <algorithm>

namespace velhost {
namespace {

constexpr std::size_t kInterfaceType = 0x04;
constexpr std::size_t kDataLength = 0x05;  // of what is specific to the interface's type
constexpr std::size_t kDeviceType = 0x06;
constexpr std::size_t kDescriptor = 0x07;
constexpr unsigned char kNetworkInterface = 0x40;

// The device types, and where in their descriptors the serial number stands.
constexpr unsigned char kUsb = 0x02;
constexpr std::size_t kUsbStringDescriptor = kDescriptor + 4;  // behind idVendor and idProduct
constexpr std::size_t kStringDescriptorHeader = 2;             // bLength, which counts it, and type
constexpr unsigned char kUsbVersion2 = 0x04;
constexpr std::size_t kUsbVersion2Serial = kDescriptor + 5;  // behind a length and the two ids

// A protocol record: type, length of its data, data.
constexpr std::size_t kRecordHeader = 2;
constexpr unsigned char kRedfishOverIp = 0x04;
constexpr std::size_t kUuidSize = 16;  // the Service UUID; the data begins with it

// Of USB strings some are written as ASCII.
Notation notationOf(std::span<const unsigned char> text) {
  for (std::size_t i = 1; i < text.size(); i += 2) {
    if (text[i] != 0) return Notation::kText;
  }
  return Notation::kWideText;
}

// `data` ends with what is specific to the interface's type.
void addSerial(std::span<const unsigned char> data, HostInterfaceIds& ids) {
  if (data.size() <= kDeviceType) return;
  const unsigned char device = data[kDeviceType];
  if (device == kUsbVersion2 && data.size() > kUsbVersion2Serial) {
    ids.serialString = data[kUsbVersion2Serial];
  }
  constexpr std::size_t begin = kUsbStringDescriptor + kStringDescriptorHeader;
  if (device != kUsb || data.size() <= begin) return;
  const std::size_t end =
      std::min<std::size_t>(data.size(), kUsbStringDescriptor + data[kUsbStringDescriptor]);
  if (end <= begin) return;
  ids.fields.push_back({begin, end - begin, notationOf(data.subspan(begin, end - begin))});
}

// `at` is where the number of protocol records stands.
void addServiceUuids(std::span<const unsigned char> formatted, std::size_t at,
                     HostInterfaceIds& ids) {
  if (at >= formatted.size()) return;
  unsigned count = formatted[at++];
  for (; count > 0 && at + kRecordHeader < formatted.size(); --count) {
    const std::size_t size = formatted[at + 1];
    const std::size_t data = at + kRecordHeader;
    const std::size_t uuid = std::min({kUuidSize, size, formatted.size() - data});
    if (formatted[at] == kRedfishOverIp && uuid > 0) {
      ids.fields.push_back({data, uuid, Notation::kNumber});
    }
    at = data + size;
  }
}

}  // namespace

HostInterfaceIds hostInterfaceIds(std::span<const unsigned char> formatted) {
  HostInterfaceIds ids;
  if (formatted.size() <= kDataLength || formatted[kInterfaceType] != kNetworkInterface) return ids;
  const std::size_t end = kDeviceType + formatted[kDataLength];
  addSerial(formatted.first(std::min(end, formatted.size())), ids);
  addServiceUuids(formatted, end, ids);
  return ids;
}

}  // namespace velhost
