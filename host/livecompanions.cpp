// SPDX-License-Identifier: Apache-2.0
#include "host/livecompanions.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "host/devicetexts.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;

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

Companion companion(const char* className, std::string deviceId, std::string description) {
  Companion made{className, {{"DeviceID", TCIMValue(deviceId)}}};
  if (!description.empty()) {
    made.properties.emplace_back("Description", TCIMValue(description));
  }
  return made;
}

std::optional<Companion> usbDevice(DeviceTree& tree, const std::string& device) {
  AttributeReader attributes(tree, device);
  UsbDeviceTexts texts;
  texts.port = kernelName(device);
  texts.vendorId = attributes.read("idVendor");
  texts.productId = attributes.read("idProduct");
  texts.maker = attributes.read("manufacturer");
  texts.product = attributes.read("product");
  if (!attributes.found()) return std::nullopt;
  return companion("KRXSG_USBDevice", usbDeviceId(texts),
                   deviceDescription(texts.maker, texts.product));
}

std::optional<Companion> tapeDrive(DeviceTree& tree, const std::string& device) {
  if (tree.attribute(device, "type") != kTapeDrive) return std::nullopt;
  AttributeReader attributes(tree, device);
  TapeDriveTexts texts;
  texts.address = kernelName(device);
  texts.vendor = attributes.read("vendor");
  texts.product = attributes.read("model");
  texts.revision = attributes.read("rev");
  if (!attributes.found()) return std::nullopt;
  texts.usbInterface = kernelName(tree.parent(device, "usb", "usb_interface").value_or(""));
  return companion("KRXSG_TapeDrive", tapeDeviceId(texts),
                   deviceDescription(texts.vendor, texts.product));
}

struct Source {
  const char* subsystem;
  const char* devtype;
  std::optional<Companion> (*companion)(DeviceTree& tree, const std::string& device);
};

// Tape drives are found as SCSI devices, one each. The class scsi_tape would show each of them
// eight times, once for every mode and for whether it rewinds, and only with the tape driver loaded.
constexpr Source kSources[] = {
    {"usb", "usb_device", usbDevice},
    {"scsi", "scsi_device", tapeDrive},
};

}  // namespace

std::vector<Companion> liveCompanions(DeviceTree& tree) {
  std::vector<Companion> companions;
  for (const Source& source : kSources) {
    std::vector<std::string> devices = tree.devices(source.subsystem, source.devtype);
    std::ranges::sort(devices);
    for (const std::string& device : devices) {
      if (auto found = source.companion(tree, device)) companions.push_back(std::move(*found));
    }
  }
  return companions;
}

}  // namespace velhost
