// SPDX-License-Identifier: Apache-2.0
//
// USB mass-storage device identifiers: USBSTOR\class&VEN_vendor&PROD_product&REV_revision\rest
#pragma once

#include <string>

namespace spfirmwarevpd {

struct UsbStorageDevice {
  std::string vendor;
  std::string product;
  std::string revision;
};

// The device is attached over USB.
bool isUsbStoragePath(const std::string& deviceId);

// A missing key gives the empty text, a missing end mark the text up to the end.
UsbStorageDevice parseUsbStoragePath(const std::string& deviceId);

}  // namespace spfirmwarevpd
