// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/devices.h"

#include <algorithm>
#include <optional>
#include <string>

#include "collectors/deviceinventory/devicetexts.h"

namespace deviceinventory {
namespace {

// What INQUIRY data calls a sequential-access device (SCSI Primary Commands, peripheral device type).
constexpr const char* kTapeDrive = "1";

std::string kernelName(const std::string& device) { return device.substr(device.rfind('/') + 1); }

// Reads one device's attributes and remembers whether any of them was there.
class AttributeReader {
 public:
  AttributeReader(DeviceTree& tree, const std::string& device) : tree_(tree), device_(device) {}

  std::string read(const char* name) {
    const std::optional<std::string> value = tree_.attribute(device_, name);
    found_ = found_ || value.has_value();
    return value.value_or("");
  }
  bool found() const { return found_; }

 private:
  DeviceTree& tree_;
  const std::string& device_;
  bool found_ = false;
};

std::optional<Device> usbDevice(DeviceTree& tree, const std::string& path) {
  AttributeReader attributes(tree, path);
  UsbDeviceTexts texts;
  texts.port = kernelName(path);
  texts.vendorId = attributes.read("idVendor");
  texts.productId = attributes.read("idProduct");
  texts.maker = attributes.read("manufacturer");
  texts.product = attributes.read("product");
  if (!attributes.found()) return std::nullopt;
  return Device{usbDeviceId(texts), deviceDescription(texts.maker, texts.product)};
}

std::optional<Device> tapeDrive(DeviceTree& tree, const std::string& path) {
  if (tree.attribute(path, "type") != kTapeDrive) return std::nullopt;
  AttributeReader attributes(tree, path);
  TapeDriveTexts texts;
  texts.address = kernelName(path);
  texts.vendor = attributes.read("vendor");
  texts.product = attributes.read("model");
  texts.revision = attributes.read("rev");
  if (!attributes.found()) return std::nullopt;
  texts.usbInterface = kernelName(tree.parent(path, "usb", "usb_interface").value_or(""));
  return Device{tapeDeviceId(texts), deviceDescription(texts.vendor, texts.product)};
}

std::vector<Device> devicesOf(DeviceTree& tree, std::vector<std::string> paths,
                              std::optional<Device> (*read)(DeviceTree&, const std::string&)) {
  std::vector<Device> devices;
  std::ranges::sort(paths);
  for (const std::string& path : paths) {
    if (auto device = read(tree, path)) devices.push_back(std::move(*device));
  }
  return devices;
}

}  // namespace

std::vector<Device> usbDevices(DeviceTree& tree) {
  return devicesOf(tree, tree.devices("usb", "usb_device"), usbDevice);
}

// Found as SCSI devices, one each. The class scsi_tape would show each of them eight times, once for
// every mode and for whether it rewinds, and only with the tape driver loaded.
std::vector<Device> tapeDrives(DeviceTree& tree) {
  return devicesOf(tree, tree.devices("scsi", "scsi_device"), tapeDrive);
}

}  // namespace deviceinventory
