// SPDX-License-Identifier: Apache-2.0
//
// Loads plug-ins (*.pi.so), the host's side of the plug-in manager.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "vel/export.h"
#include "vel/plugin.h"

namespace NKRXVEL20::host {

// A plug-in could not be loaded; what() is one line that names the file and the reason.
class VEL_API PluginLoadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~PluginLoadError() override;
};

// A plug-in in this process. Destroying it runs DeInit and PrepareForUnload and unloads the shared
// object, so nothing that came from the plug-in may be used afterwards.
class VEL_API LoadedPlugin {
 public:
  virtual ~LoadedPlugin();
  virtual IPluginCallbacks& callbacks() = 0;
  virtual IPluginBasicQueryCallbacks& query() = 0;
};

class VEL_API PluginLoader {
 public:
  // Sets up the plug-in manager that plug-ins register with.
  PluginLoader();
  ~PluginLoader();

  PluginLoader(const PluginLoader&) = delete;
  PluginLoader& operator=(const PluginLoader&) = delete;

  // Loads the shared object, whose static constructors register its one plug-in. Init is left to
  // the caller. Throws PluginLoadError.
  std::unique_ptr<LoadedPlugin> load(const std::filesystem::path& file);
};

}  // namespace NKRXVEL20::host
