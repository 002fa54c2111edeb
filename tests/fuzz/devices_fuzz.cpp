// SPDX-License-Identifier: Apache-2.0
//
// Devices whose attributes in sysfs are whatever the bytes are, up to the next zero byte each. Identifiers
// are printable characters in their fields, descriptions one line of UTF-8 without blanks around it, and
// a device is there when one of its attributes is.
#include <algorithm>
#include <array>
#include <map>

#include "collectors/deviceinventory/devices.h"
#include "tests/fuzz/bytesource.h"
#include "tests/fuzz/require.h"
#include "vel/utf8.h"

namespace {

using namespace deviceinventory;
using fuzz::ByteSource;
using fuzz::require;

constexpr std::size_t kMostDevices = 16;
constexpr std::array kUsbAttributes{"idVendor", "idProduct", "manufacturer", "product"};
constexpr std::array kTapeAttributes{"type", "vendor", "model", "rev"};

using Attributes = std::map<std::string, std::string>;

class AnyTree : public DeviceTree {
 public:
  explicit AnyTree(ByteSource& bytes) {
    for (std::size_t i = 0; i < kMostDevices && !bytes.isEmpty(); ++i) addDevice(bytes, i);
  }

  std::vector<std::string> devices(const std::string& subsystem,
                                   const std::string& devtype) override {
    const bool isUsb = subsystem == "usb" && devtype == "usb_device";
    require(isUsb || (subsystem == "scsi" && devtype == "scsi_device"), "both kinds are known");
    return isUsb ? usb_ : scsi_;
  }
  std::optional<std::string> attribute(const std::string& device,
                                       const std::string& name) override {
    const auto& attributes = attributes_.at(device);
    const auto found = attributes.find(name);
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<std::string> parent(const std::string& device, const std::string& /*subsystem*/,
                                    const std::string& /*devtype*/) override {
    const auto& attributes = attributes_.at(device);
    if (!attributes.contains("usb")) return std::nullopt;
    return "/sys/devices/usb1/1-1:1.0";
  }

  // Those that have an attribute, of tapes beside their type.
  std::size_t countOf(const std::vector<std::string>& devices, bool isTape) const {
    return static_cast<std::size_t>(std::ranges::count_if(devices, [&](const std::string& device) {
      Attributes attributes = attributes_.at(device);
      if (isTape && (!attributes.contains("type") || attributes["type"] != "1")) return false;
      attributes.erase("type");
      attributes.erase("usb");
      return !attributes.empty();
    }));
  }
  std::size_t usbCount() const { return countOf(usb_, false); }
  std::size_t tapeCount() const { return countOf(scsi_, true); }

 private:
  // A byte of flags: which kind it is, which attributes it has.
  void addDevice(ByteSource& bytes, std::size_t index) {
    const std::uint8_t flags = bytes.byte();
    const bool isUsb = (flags & 1U) != 0;
    const std::string path = "/sys/devices/" + std::string(isUsb ? "1-" : "2:0:0:") +
                             std::to_string(kMostDevices - index);
    (isUsb ? usb_ : scsi_).push_back(path);
    Attributes& attributes = attributes_[path];
    if ((flags & 2U) != 0) attributes["usb"] = "";
    for (std::size_t i = 0; i < kUsbAttributes.size(); ++i) {
      if ((flags >> (i + 2) & 1U) == 0) continue;
      attributes[isUsb ? kUsbAttributes[i] : kTapeAttributes[i]] = bytes.text();
    }
  }

  std::vector<std::string> usb_;
  std::vector<std::string> scsi_;
  std::map<std::string, Attributes> attributes_;
};

void checkDescription(const std::string& text) {
  const bool isPlain = std::ranges::none_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
  require(isPlain, "a description is one line");
  require(NKRXVEL20::isUtf8(text), "a description is UTF-8");
  require(!text.starts_with(' ') && !text.ends_with(' '), "no blanks stand around it");
}

void checkDevice(const Device& device, std::string_view begin, std::ptrdiff_t ampersands) {
  const std::string& id = device.deviceId;
  require(std::ranges::all_of(id, [](char c) { return c > ' ' && c <= '~' && c != ','; }),
          "an identifier is printable");
  require(id.starts_with(begin), "an identifier says what the device is");
  require(std::ranges::count(id, '\\') == 2, "an identifier has three parts");
  require(std::ranges::count(id, '&') == ampersands, "an identifier has its fields");
  checkDescription(device.description);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource bytes(data, size);
  AnyTree tree(bytes);
  const auto usb = usbDevices(tree);
  require(usb.size() == tree.usbCount(), "each USB device is there");
  for (const Device& device : usb) checkDevice(device, "USB\\VID_", 1);
  const auto tapes = tapeDrives(tree);
  require(tapes.size() == tree.tapeCount(), "each tape drive is there");
  for (const Device& device : tapes) {
    const bool isUsb = device.deviceId.starts_with("USBSTOR");
    checkDevice(device, isUsb ? "USBSTOR\\SEQUENTIAL&VEN_" : "SCSI\\SEQUENTIAL&VEN_",
                isUsb ? 4 : 3);
  }
  return 0;
}
