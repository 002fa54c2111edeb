// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/devicetexts.h"

#include <algorithm>

#include "vel/utf8.h"

namespace deviceinventory {
namespace {

bool isControl(char c) {
  const auto value = static_cast<unsigned char>(c);
  return value < 0x20 || value == 0x7F;
}

std::string_view withoutPadding(std::string_view text) {
  const auto isPadding = [](char c) { return c == ' ' || isControl(c); };
  while (!text.empty() && isPadding(text.front())) text.remove_prefix(1);
  while (!text.empty() && isPadding(text.back())) text.remove_suffix(1);
  return text;
}

std::string plainText(std::string_view text) {
  std::string plain(withoutPadding(text));
  std::ranges::replace_if(plain, isControl, ' ');
  return NKRXVEL20::toUtf8(plain);
}

// Device identifiers are printable ASCII without blanks and commas; '&' and '\' part their fields.
bool standsInIdentifier(char c) {
  const auto value = static_cast<unsigned char>(c);
  return value > 0x20 && value < 0x7F && c != ',' && c != '&' && c != '\\';
}

std::string identifierField(std::string_view text) {
  std::string field(withoutPadding(text));
  std::ranges::replace_if(
      field, [](char c) { return !standsInIdentifier(c); }, '_');
  return field;
}

// Not by toupper, which asks the locale.
std::string upperCase(std::string text) {
  const auto upper = [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  };
  std::ranges::transform(text, text.begin(), upper);
  return text;
}

}  // namespace

std::string deviceDescription(std::string_view maker, std::string_view product) {
  const std::string first = plainText(maker);
  const std::string second = plainText(product);
  return first + (first.empty() || second.empty() ? "" : " ") + second;
}

std::string usbDeviceId(const UsbDeviceTexts& device) {
  return "USB\\VID_" + upperCase(identifierField(device.vendorId)) + "&PID_" +
         upperCase(identifierField(device.productId)) + '\\' + device.port;
}

std::string tapeDeviceId(const TapeDriveTexts& drive) {
  const bool usb = !drive.usbInterface.empty();
  const std::string lun = drive.address.substr(drive.address.rfind(':') + 1);
  return std::string(usb ? "USBSTOR" : "SCSI") + "\\SEQUENTIAL&VEN_" +
         identifierField(drive.vendor) + "&PROD_" + identifierField(drive.product) + "&REV_" +
         identifierField(drive.revision) + '\\' +
         (usb ? drive.usbInterface + '&' + lun : drive.address);
}

}  // namespace deviceinventory
