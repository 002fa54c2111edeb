// SPDX-License-Identifier: Apache-2.0
//
// A device tree that a test scripts, and that keeps what it was asked.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "collectors/deviceinventory/devicetree.h"

namespace deviceinventory {

struct ScriptedDevice {
  std::string path;
  std::string subsystem;
  std::string devtype;
  std::map<std::string, std::string> attributes;
  int readsUntilGone = -1;  // how many attributes can be read before the device goes; -1: it stays
};

class ScriptedTree : public DeviceTree {
 public:
  explicit ScriptedTree(std::vector<ScriptedDevice> devices) : devices_(std::move(devices)) {}

  // In the order of the script.
  std::vector<std::string> devices(const std::string& subsystem,
                                   const std::string& devtype) override {
    calls.push_back("devices " + subsystem + ' ' + devtype);
    std::vector<std::string> paths;
    for (const ScriptedDevice& device : devices_) {
      if (device.subsystem == subsystem && device.devtype == devtype) paths.push_back(device.path);
    }
    return paths;
  }

  std::optional<std::string> attribute(const std::string& path, const std::string& name) override {
    calls.push_back("attribute " + path + ' ' + name);
    for (ScriptedDevice& device : devices_) {
      if (device.path != path || device.readsUntilGone == 0) continue;
      if (device.readsUntilGone > 0) --device.readsUntilGone;
      const auto found = device.attributes.find(name);
      if (found != device.attributes.end()) return found->second;
    }
    return std::nullopt;
  }

  std::optional<std::string> parent(const std::string& path, const std::string& subsystem,
                                    const std::string& devtype) override {
    calls.push_back("parent " + path + ' ' + subsystem + ' ' + devtype);
    std::optional<std::string> nearest;
    for (const ScriptedDevice& device : devices_) {
      if (device.subsystem != subsystem || device.devtype != devtype) continue;
      if (!path.starts_with(device.path + '/')) continue;
      if (!nearest || device.path.size() > nearest->size()) nearest = device.path;
    }
    return nearest;
  }

  std::vector<std::string> calls;

 private:
  std::vector<ScriptedDevice> devices_;
};

}  // namespace deviceinventory
