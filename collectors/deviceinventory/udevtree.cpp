// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/udevtree.h"

#include <libudev.h>

namespace deviceinventory {
namespace {

template <auto release>
struct Release {
  template <class Object>
  void operator()(Object* object) const {
    release(object);
  }
};

using Udev = std::unique_ptr<udev, Release<udev_unref>>;
using Enumeration = std::unique_ptr<udev_enumerate, Release<udev_enumerate_unref>>;
using Device = std::unique_ptr<udev_device, Release<udev_device_unref>>;

std::optional<std::string> textOf(const char* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

class UdevTree : public DeviceTree {
 public:
  std::vector<std::string> devices(const std::string& subsystem,
                                   const std::string& devtype) override;
  std::optional<std::string> attribute(const std::string& device, const std::string& name) override;
  std::optional<std::string> parent(const std::string& device, const std::string& subsystem,
                                    const std::string& devtype) override;

 private:
  Enumeration enumerate(const std::string& subsystem, const std::string& devtype);
  Device open(const std::string& device);

  Udev udev_{udev_new()};
};

// Null when libudev does not take the conditions: without them it would list every device.
Enumeration UdevTree::enumerate(const std::string& subsystem, const std::string& devtype) {
  Enumeration found(udev_ ? udev_enumerate_new(udev_.get()) : nullptr);
  if (!found) return nullptr;
  if (udev_enumerate_add_match_subsystem(found.get(), subsystem.c_str()) < 0) return nullptr;
  if (udev_enumerate_add_match_property(found.get(), "DEVTYPE", devtype.c_str()) < 0) {
    return nullptr;
  }
  // A scan that fails at one device has found the others.
  static_cast<void>(udev_enumerate_scan_devices(found.get()));
  return found;
}

std::vector<std::string> UdevTree::devices(const std::string& subsystem,
                                           const std::string& devtype) {
  std::vector<std::string> paths;
  const Enumeration found = enumerate(subsystem, devtype);
  if (!found) return paths;
  for (udev_list_entry* entry = udev_enumerate_get_list_entry(found.get()); entry != nullptr;
       entry = udev_list_entry_get_next(entry)) {
    if (const auto path = textOf(udev_list_entry_get_name(entry))) paths.push_back(*path);
  }
  return paths;
}

Device UdevTree::open(const std::string& device) {
  return Device(udev_ ? udev_device_new_from_syspath(udev_.get(), device.c_str()) : nullptr);
}

std::optional<std::string> UdevTree::attribute(const std::string& device, const std::string& name) {
  const Device opened = open(device);
  if (!opened) return std::nullopt;
  return textOf(udev_device_get_sysattr_value(opened.get(), name.c_str()));
}

std::optional<std::string> UdevTree::parent(const std::string& device, const std::string& subsystem,
                                            const std::string& devtype) {
  const Device opened = open(device);
  if (!opened) return std::nullopt;
  // Belongs to the device below it.
  udev_device* const above = udev_device_get_parent_with_subsystem_devtype(
      opened.get(), subsystem.c_str(), devtype.c_str());
  return above == nullptr ? std::nullopt : textOf(udev_device_get_syspath(above));
}

}  // namespace

std::unique_ptr<DeviceTree> makeUdevTree() { return std::make_unique<UdevTree>(); }

}  // namespace deviceinventory
