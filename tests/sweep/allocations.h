// SPDX-License-Identifier: Apache-2.0
//
// Allocations that fail. The program's operator new is replaced; it counts what is allocated while
// the plug-in works, and the platform around it does not.
#pragma once

namespace sweep {

// While it lives, the allocations of the plug-in count, and the nth fails with std::bad_alloc; with
// `fromThenOn` those behind it too. 0: none fails.
class PluginWork {
 public:
  PluginWork(unsigned nth, bool fromThenOn);
  ~PluginWork();
  PluginWork(const PluginWork&) = delete;
  PluginWork& operator=(const PluginWork&) = delete;

  static unsigned allocations();  // of the last or present one
};

// While it lives, allocations do not count.
class PlatformWork {
 public:
  PlatformWork();
  ~PlatformWork();
  PlatformWork(const PlatformWork&) = delete;
  PlatformWork& operator=(const PlatformWork&) = delete;

 private:
  bool counted_;
};

}  // namespace sweep
