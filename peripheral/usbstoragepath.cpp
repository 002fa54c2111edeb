// SPDX-License-Identifier: Apache-2.0
#include "peripheral/usbstoragepath.h"

#include <string_view>

#include "collectors/support/contains.h"

namespace spfirmwarevpd {

namespace {

std::string field(const std::string& deviceId, std::string_view key, char endMark) {
  const std::size_t keyStart = deviceId.find(key);
  if (keyStart == std::string::npos) return {};
  const std::size_t start = keyStart + key.size();
  const std::size_t end = deviceId.find(endMark, keyStart);
  return deviceId.substr(start, end == std::string::npos ? end : end - start);
}

}  // namespace

bool isUsbStoragePath(const std::string& deviceId) {
  return collector::contains(deviceId, "USBSTOR");
}

UsbStorageDevice parseUsbStoragePath(const std::string& deviceId) {
  return {.vendor = field(deviceId, "VEN_", '&'),
          .product = field(deviceId, "PROD_", '&'),
          .revision = field(deviceId, "REV_", '\\')};
}

}  // namespace spfirmwarevpd
