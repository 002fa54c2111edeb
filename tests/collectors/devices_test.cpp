// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/devices.h"

#include <gtest/gtest.h>

#include "scriptedtree.h"

namespace deviceinventory {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kHub = "/sys/devices/pci0/usb1";
constexpr const char* kConsole = "/sys/devices/pci0/usb1/1-1";
constexpr const char* kStorage = "/sys/devices/pci0/usb1/1-2";
constexpr const char* kStorageInterface = "/sys/devices/pci0/usb1/1-2/1-2:1.0";
constexpr const char* kUsbTape = "/sys/devices/pci0/usb1/1-2/1-2:1.0/host2/target2:0:0/2:0:0:0";
constexpr const char* kScsiTape = "/sys/devices/pci1/host0/target0:0:4/0:0:4:0";

ScriptedDevice usb(const char* path, std::map<std::string, std::string> attributes) {
  return {path, "usb", "usb_device", std::move(attributes)};
}

ScriptedDevice scsi(const char* path, const char* type) {
  return {path,
          "scsi",
          "scsi_device",
          {{"type", type}, {"vendor", "ACME    "}, {"model", "TAPE1           "}, {"rev", "0102"}}};
}

ScriptedDevice goneAfter(int reads, ScriptedDevice device) {
  device.readsUntilGone = reads;
  return device;
}

// "ID: description", a device a line; USB devices, then tape drives.
Texts lines(DeviceTree& tree) {
  Texts all;
  for (const auto& devices : {usbDevices(tree), tapeDrives(tree)}) {
    for (const Device& device : devices) all.push_back(device.deviceId + ": " + device.description);
  }
  return all;
}

const std::map<std::string, std::string> kConsoleAttributes{{"idVendor", "1d6b"},
                                                            {"idProduct", "0104"},
                                                            {"manufacturer", "KRX"},
                                                            {"product", "Console cKVM"}};

TEST(Devices, DevicesBecomeInstances) {
  const struct {
    const char* what;
    std::vector<ScriptedDevice> devices;
    Texts lines;
  } cases[] = {
      {"nothing, and libudev that lists nothing", {}, {}},
      {"USB devices and hubs by path, whatever the order in which they are listed",
       {usb(kConsole, kConsoleAttributes),
        usb(kStorage, {{"idVendor", "1d6b"}, {"idProduct", "0105"}, {"product", "USB tape"}}),
        usb(kHub, {{"idVendor", "1d6b"}, {"idProduct", "0002"}})},
       {R"(USB\VID_1D6B&PID_0002\usb1: )", R"(USB\VID_1D6B&PID_0104\1-1: KRX Console cKVM)",
        R"(USB\VID_1D6B&PID_0105\1-2: USB tape)"}},
      {"tape drives behind the USB devices, on USB by their interface",
       {scsi(kUsbTape, "1"),
        scsi(kScsiTape, "1"),
        usb(kConsole, kConsoleAttributes),
        {kStorageInterface, "usb", "usb_interface", {}}},
       {R"(USB\VID_1D6B&PID_0104\1-1: KRX Console cKVM)",
        R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\1-2:1.0&0: ACME TAPE1)",
        R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\0:0:4:0: ACME TAPE1)"}},
      {"of SCSI only sequential access: no disk, changer, or type of two digits",
       {scsi("/sys/devices/0:0:0:0", "0"), scsi("/sys/devices/0:0:1:0", "8"),
        scsi("/sys/devices/0:0:2:0", "13")},
       {}},
      {"the tape driver's nodes give no drive more",
       {scsi("/sys/devices/0:0:4:0", "1"),
        {"/sys/devices/0:0:4:0/scsi_tape/nst0", "scsi_tape", "", {}},
        {"/sys/devices/0:0:4:0/scsi_tape/st0", "scsi_tape", "", {}},
        {"/sys/devices/0:0:4:0/scsi_tape/st0a", "scsi_tape", "", {}}},
       {R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\0:0:4:0: ACME TAPE1)"}},
  };
  for (const auto& c : cases) {
    ScriptedTree tree(c.devices);
    EXPECT_EQ(c.lines, lines(tree)) << c.what;
  }
}

TEST(Devices, WhatCannotBeReadIsLeftOut) {
  const struct {
    const char* what;
    ScriptedDevice device;
    Texts lines;
  } cases[] = {
      {"USB device gone before anything was read",
       goneAfter(0, usb(kConsole, kConsoleAttributes)),
       {}},
      {"gone behind its vendor",
       goneAfter(1, usb(kConsole, kConsoleAttributes)),
       {R"(USB\VID_1D6B&PID_\1-1: )"}},
      {"gone behind its identifiers",
       goneAfter(2, usb(kConsole, kConsoleAttributes)),
       {R"(USB\VID_1D6B&PID_0104\1-1: )"}},
      {"gone behind its maker",
       goneAfter(3, usb(kConsole, kConsoleAttributes)),
       {R"(USB\VID_1D6B&PID_0104\1-1: KRX)"}},
      {"USB device without identifiers",
       usb(kConsole, {{"product", "cKVM"}}),
       {R"(USB\VID_&PID_\1-1: cKVM)"}},
      {"SCSI device gone before its type was read", goneAfter(0, scsi(kScsiTape, "1")), {}},
      {"gone behind its type", goneAfter(1, scsi(kScsiTape, "1")), {}},
      {"gone behind its vendor",
       goneAfter(2, scsi(kScsiTape, "1")),
       {R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_&REV_\0:0:4:0: ACME)"}},
      {"gone behind its product",
       goneAfter(3, scsi(kScsiTape, "1")),
       {R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_\0:0:4:0: ACME TAPE1)"}},
  };
  for (const auto& c : cases) {
    ScriptedTree tree({c.device});
    EXPECT_EQ(c.lines, lines(tree)) << c.what;
  }
}

TEST(Devices, AsksForNoMoreThanItNeeds) {
  ScriptedTree tree({usb("/u", kConsoleAttributes), scsi("/d", "0"), scsi("/t", "1")});
  lines(tree);
  EXPECT_EQ((Texts{"devices usb usb_device", "attribute /u idVendor", "attribute /u idProduct",
                   "attribute /u manufacturer", "attribute /u product", "devices scsi scsi_device",
                   "attribute /d type", "attribute /t type", "attribute /t vendor",
                   "attribute /t model", "attribute /t rev", "parent /t usb usb_interface"}),
            tree.calls);
}

}  // namespace
}  // namespace deviceinventory
