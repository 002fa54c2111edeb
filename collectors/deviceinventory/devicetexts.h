// SPDX-License-Identifier: Apache-2.0
//
// How devices are named and described in instances. Texts of devices come padded, and may hold any
// byte but zero; a text that is not there is empty.
#pragma once

#include <string>
#include <string_view>

namespace deviceinventory {

struct UsbDeviceTexts {
  std::string port;  // the kernel's name of where it is plugged in: 1-1.4, or usb1 for a root hub
  std::string vendorId;   // four hex digits
  std::string productId;  // four hex digits
  std::string maker;
  std::string product;
};

struct TapeDriveTexts {
  std::string usbInterface;  // the kernel's name: 1-1.4:1.0; empty: the drive is not on USB
  std::string address;       // HOST:CHANNEL:TARGET:LUN
  std::string vendor;        // these three as the drive's INQUIRY data gives them
  std::string product;
  std::string revision;
};

// "MAKER PRODUCT", or whichever of the two there is. UTF-8 on one line.
std::string deviceDescription(std::string_view maker, std::string_view product);

// USB\VID_1D6B&PID_0104\1-1.4. A device is told from its like by where it is, not by its serial
// number: many have none or the same one, and an identifier travels in recorded machine files.
std::string usbDeviceId(const UsbDeviceTexts& device);

// USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\1-1.4:1.0&0, where 0 is the LUN; off USB
// SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\2:0:0:0.
std::string tapeDeviceId(const TapeDriveTexts& drive);

}  // namespace deviceinventory
