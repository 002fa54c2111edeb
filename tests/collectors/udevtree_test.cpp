// SPDX-License-Identifier: Apache-2.0
//
// Defines the functions of libudev that are used, so this is a program of its own. They keep what
// they were asked and count the objects that are still held; each of them can be made to fail.
#include "collectors/deviceinventory/udevtree.h"

#include <gtest/gtest.h>
#include <libudev.h>

#include <cerrno>
#include <map>
#include <set>

struct udev {};

struct udev_list_entry {
  const char* name;
  udev_list_entry* next;
};

struct udev_enumerate {
  udev_list_entry second{"/sys/b", nullptr};
  udev_list_entry nameless{nullptr, &second};
  udev_list_entry first{"/sys/a", &nameless};
};

struct udev_device {
  const char* path;
  udev_device* above;
};

namespace {

using Texts = std::vector<std::string>;

struct Script {
  std::set<std::string> failing;  // names of functions
  Texts calls;
  int held = 0;
};

Script& script() {
  static Script kept;
  return kept;
}

bool fails(const std::string& function) { return script().failing.contains(function); }

template <class Object>
Object* given(const char* function, Object made) {
  if (fails(function)) return nullptr;
  ++script().held;
  return new Object(made);
}

template <class Object>
Object* taken(Object* object) {
  --script().held;
  delete object;
  return nullptr;
}

int asked(const char* function, const std::string& what) {
  script().calls.push_back(function + (' ' + what));
  return fails(function) ? -ENOMEM : 0;
}

}  // namespace

extern "C" {

udev* udev_new() { return given("new", udev{}); }
udev* udev_unref(udev* object) { return taken(object); }

udev_enumerate* udev_enumerate_new(udev* /*udev*/) {
  if (fails("enumerate")) return nullptr;
  ++script().held;
  return new udev_enumerate;
}
udev_enumerate* udev_enumerate_unref(udev_enumerate* object) { return taken(object); }

int udev_enumerate_add_match_subsystem(udev_enumerate* /*object*/, const char* subsystem) {
  return asked("subsystem", subsystem);
}
int udev_enumerate_add_match_property(udev_enumerate* /*object*/, const char* name,
                                      const char* value) {
  return asked("property", std::string(name) + '=' + value);
}
int udev_enumerate_scan_devices(udev_enumerate* /*object*/) { return asked("scan", "devices"); }
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* object) {
  return fails("list") ? nullptr : &object->first;
}
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next; }
const char* udev_list_entry_get_name(udev_list_entry* entry) { return entry->name; }

udev_device* udev_device_new_from_syspath(udev* /*udev*/, const char* path) {
  asked("open", path);
  static udev_device above{"/sys", nullptr};
  return given("open", udev_device{path, &above});
}
udev_device* udev_device_unref(udev_device* object) { return taken(object); }
const char* udev_device_get_sysattr_value(udev_device* /*device*/, const char* name) {
  return asked("attribute", name) < 0 ? nullptr : "value";
}
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* subsystem,
                                                           const char* devtype) {
  return asked("parent", std::string(subsystem) + ' ' + devtype) < 0 ? nullptr : device->above;
}
const char* udev_device_get_syspath(udev_device* device) {
  return fails("syspath") ? nullptr : device->path;
}

}  // extern "C"

namespace deviceinventory {
namespace {

// What a new tree answers when these functions of libudev fail; nothing is held afterwards.
struct Answers {
  Texts devices;
  std::optional<std::string> attribute;
  std::optional<std::string> parent;
};

Answers answersWithout(const std::set<std::string>& failing) {
  script() = {failing, {}, 0};
  const auto tree = makeUdevTree();
  return {tree->devices("usb", "usb_device"), tree->attribute("/sys/a", "product"),
          tree->parent("/sys/a", "usb", "usb_interface")};
}

TEST(UdevTree, AsksLibudev) {
  const Answers answers = answersWithout({});
  EXPECT_EQ((Texts{"/sys/a", "/sys/b"}), answers.devices);
  EXPECT_EQ("value", answers.attribute);
  EXPECT_EQ("/sys", answers.parent);
  EXPECT_EQ((Texts{"subsystem usb", "property DEVTYPE=usb_device", "scan devices", "open /sys/a",
                   "attribute product", "open /sys/a", "parent usb usb_interface"}),
            script().calls);
  EXPECT_EQ(0, script().held);
}

TEST(UdevTree, WhateverFailsIsLeftOutAndNothingIsHeld) {
  const Texts both{"/sys/a", "/sys/b"};
  const struct {
    const char* failing;
    Texts devices;
    bool attribute;
    bool parent;
  } cases[] = {
      {"new", {}, false, false},        {"enumerate", {}, true, true},
      {"subsystem", {}, true, true},    {"property", {}, true, true},
      {"scan", both, true, true},  // which has failed at one device and found the others
      {"list", {}, true, true},         {"open", both, false, false},  // gone since it was listed
      {"attribute", both, false, true}, {"parent", both, true, false},
      {"syspath", both, true, false},
  };
  for (const auto& c : cases) {
    const Answers answers = answersWithout({c.failing});
    EXPECT_EQ(c.devices, answers.devices) << c.failing;
    EXPECT_EQ(c.attribute, answers.attribute.has_value()) << c.failing;
    EXPECT_EQ(c.parent, answers.parent.has_value()) << c.failing;
    EXPECT_EQ(0, script().held) << c.failing;
  }
}

}  // namespace
}  // namespace deviceinventory
