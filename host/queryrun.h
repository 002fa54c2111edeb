// SPDX-License-Identifier: Apache-2.0
//
// A plug-in loaded on a machine, ready to be queried.
#pragma once

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/machine.h"
#include "host/queryresult.h"
#include "velhost/log.h"
#include "velhost/pluginloader.h"

namespace velhost {

// The classes that the firmware collector serves, in the order of its class-name table, then the
// tape class: what is asked for when no class is named.
std::vector<std::string> defaultClasses();

struct RunOptions {
  std::filesystem::path plugin;
  bool keepLogs = false;               // they go into the results
  bool keepTraffic = false;            // as well
  NKRXVEL20::host::LogSink onCoreLog;  // gets every core-log entry as it comes
};

// Sets the platform up for the machine while it lives, so there is one at a time.
class QueryRun {
 public:
  // Throws PluginLoadError.
  QueryRun(Machine machine, RunOptions options);
  ~QueryRun();

  QueryRun(const QueryRun&) = delete;
  QueryRun& operator=(const QueryRun&) = delete;

  const QueryContext& context() const { return context_; }

  // Asks for classes of the schema. Runs Init first when `init` is set or no Init has succeeded
  // yet. An exception of the plug-in or the framework ends up in the result.
  QueryResult request(const std::vector<std::string>& classes, bool init);

 private:
  void installPlatform(Machine machine);
  void ask(const std::vector<std::string>& classes, bool init);

  // From the outside in: what is installed first is taken away last.
  struct PlatformGuard {
    PlatformGuard() = default;
    PlatformGuard(const PlatformGuard&) = delete;
    PlatformGuard& operator=(const PlatformGuard&) = delete;
    ~PlatformGuard();
  };

  RunOptions options_;
  QueryContext context_;
  std::vector<NKRXVEL20::host::LogEntry> coreLog_;
  std::vector<NKRXVEL20::host::LogEntry> failureLog_;
  PlatformGuard guard_;
  boost::shared_ptr<NKRXVEL20::host::CimNamespace> namespace_;
  NKRXVEL20::host::PluginLoader loader_;
  std::unique_ptr<NKRXVEL20::host::LoadedPlugin> plugin_;
  bool initialised_ = false;
};

}  // namespace velhost
