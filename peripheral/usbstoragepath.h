// SPDX-License-Identifier: Apache-2.0
//
// USB mass-storage device identifiers: USBSTOR\class&VEN_vendor&PROD_product&REV_revision\rest
#pragma once

#include <optional>
#include <string>

namespace spfirmwarevpd {

struct UsbStorageDevice {
  std::string vendor;
  std::string product;
  std::string revision;
};

// nullopt for a device that is not attached over USB. A missing key gives the empty text, a missing
// end mark the text up to the end.
std::optional<UsbStorageDevice> parseUsbStoragePath(const std::string& deviceId);

}  // namespace spfirmwarevpd
