// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/pointer_cast.hpp>
#include <string>

#include "vel/plugin.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"

namespace NKRXVEL20 {

inline void logStep(const std::string& step) {
  TRootObject::GetCoreLogger().Log(kSeverityProgress, step);
}

// Registers itself and writes each step of its life to the core log.
class LoggingPlugin : public IPluginCallbacks {
 public:
  LoggingPlugin() {
    logStep("constructed");
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(this);
  }
  ~LoggingPlugin() override { logStep("destroyed"); }
  LoggingPlugin(const LoggingPlugin&) = delete;
  LoggingPlugin& operator=(const LoggingPlugin&) = delete;

  int GetType() override { return 0; }
  std::string GetName() override { return "Test"; }
  std::string GetVersion() override { return "2.1"; }
  std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
  void PrepareForUnload() override {
    logStep("PrepareForUnload");
    delete this;
  }
  void Init() override { logStep("Init"); }
  void DeInit() override { logStep("DeInit"); }
};

}  // namespace NKRXVEL20
