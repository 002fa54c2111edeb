// SPDX-License-Identifier: Apache-2.0
//
// The firmware collector's shared object on the machine that a file describes, step by step: what is
// measured is one of the steps.
#pragma once

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <memory>
#include <vector>

#include "velhost/cimnamespace.h"
#include "velhost/pluginloader.h"

namespace velhost {

// Sets the platform up for the machine while it lives, so there is one at a time. The schema is the
// caller's to set.
class PluginOnMachine {
 public:
  explicit PluginOnMachine(const std::filesystem::path& machineFile);
  ~PluginOnMachine();

  PluginOnMachine(const PluginOnMachine&) = delete;
  PluginOnMachine& operator=(const PluginOnMachine&) = delete;

  void load();  // unloads the one that was loaded before
  void init() { plugin_->callbacks().Init(); }
  // The first of these behind init() collects. The second publishes too.
  void collect(const boost::shared_ptr<NKRXVEL20::ICIMNamespace>& ns) {
    std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>> none;
    plugin_->query().GetData(ns, none);
  }
  void getData() { plugin_->query().GetData(namespace_, classes_); }

  const boost::shared_ptr<NKRXVEL20::host::CimNamespace>& ns() const { return namespace_; }

 private:
  NKRXVEL20::host::PluginLoader loader_;
  boost::shared_ptr<NKRXVEL20::host::CimNamespace> namespace_;
  std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>> classes_;  // all that it serves
  std::unique_ptr<NKRXVEL20::host::LoadedPlugin> plugin_;
};

}  // namespace velhost
