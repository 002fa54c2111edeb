// SPDX-License-Identifier: Apache-2.0
//
// A collector plug-in in this process.
#pragma once

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/collectors/queryresult.h"
#include "velhost/cimnamespace.h"
#include "velhost/pluginloader.h"

namespace velhost {

class Collector {
 public:
  // Loads it. Throws PluginLoadError, also for a file that root must not load, and
  // std::runtime_error for a plug-in that does not say who it is.
  Collector(NKRXVEL20::host::PluginLoader& loader, const std::filesystem::path& file);

  const std::filesystem::path& file() const { return file_; }
  const PluginIdentity& identity() const { return identity_; }
  bool isBeingAsked() const { return isBeingAsked_; }

  // The next question begins with Init.
  void restart() { isInitialised_ = false; }

  // Asks for classes of the schema; Init comes first where it is due or has not succeeded yet. What
  // the plug-in throws passes.
  void ask(const boost::shared_ptr<NKRXVEL20::host::CimNamespace>& ns,
           const std::vector<std::string>& classes);

 private:
  std::filesystem::path file_;
  std::unique_ptr<NKRXVEL20::host::LoadedPlugin> plugin_;
  PluginIdentity identity_;
  bool isInitialised_ = false;
  bool isBeingAsked_ = false;
};

}  // namespace velhost
