// SPDX-License-Identifier: Apache-2.0
#include "velhost/pluginloader.h"

#include <dlfcn.h>

#include <array>
#include <boost/make_shared.hpp>
#include <exception>
#include <span>
#include <string>
#include <utility>

#include "vel/pluginmanager.h"
#include "vel/rootobject.h"
#include "velhost/rootobject.h"

namespace NKRXVEL20::host {
namespace {

// A plug-in may throw what it likes. To be called in a catch block only.
std::string currentExceptionText() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "an exception that is no std::exception";
  }
}

// A destructor must not throw, and one step that fails must not keep the next from being taken.
template <typename Step>
void logFailure(const char* name, Step step) noexcept {
  try {
    try {
      step();
    } catch (...) {
      TRootObject::GetCoreLogger().Log(kSeverityFailure,
                                       std::string(name) + " failed: " + currentExceptionText());
    }
  } catch (...) {  // there is nobody left to tell
  }
}

// Its static destructors run in here; see openSharedObject.
struct CloseSharedObject {
  void operator()(void* handle) const noexcept {
    int (*volatile close)(void*) = dlclose;
    logFailure("unloading", [&] { close(handle); });
  }
};
using SharedObject = std::unique_ptr<void, CloseSharedObject>;

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
  throw PluginLoadError(file.string() + ": " + reason);
}

// The loader's own words, without the file's name in front where it begins with it.
std::string loaderReason(const std::string& file) {
  const char* error = dlerror();
  const std::string reason = error == nullptr ? "the loader gives no reason" : error;
  const std::string prefix = file + ": ";
  return reason.starts_with(prefix) ? reason.substr(prefix.size()) : reason;
}

// Its static constructors run in here, and so may throw. dlopen is declared as never throwing,
// which would end the process; the call through a volatile pointer lets the exception come out.
// The system's loader keeps such an object mapped.
SharedObject openSharedObject(const std::filesystem::path& file) {
  void* (*volatile open)(const char*, int) = dlopen;
  // A path with a slash, or it would be looked for in the library directories.
  const std::string path = std::filesystem::absolute(file).string();
  SharedObject object;
  try {
    object.reset(open(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  } catch (...) {
    refuse(file, "its static constructors failed: " + currentExceptionText());
  }
  if (object == nullptr) refuse(file, loaderReason(path));
  return object;
}

// Ends plug-ins, each in its own way.
void endPlugins(std::span<IPluginCallbacks* const> plugins) noexcept {
  for (IPluginCallbacks* const plugin : plugins) {
    logFailure("PrepareForUnload", [plugin] { plugin->PrepareForUnload(); });
  }
}

class PluginInProcess : public LoadedPlugin {
 public:
  PluginInProcess(SharedObject object, IPluginCallbacks& callbacks,
                  IPluginBasicQueryCallbacks& query)
      : object_(std::move(object)), callbacks_(callbacks), query_(query) {}

  ~PluginInProcess() override {
    logFailure("DeInit", [this] { callbacks_.DeInit(); });
    endPlugins(std::array{&callbacks_});
  }

  PluginInProcess(const PluginInProcess&) = delete;
  PluginInProcess& operator=(const PluginInProcess&) = delete;

  IPluginCallbacks& callbacks() override { return callbacks_; }
  IPluginBasicQueryCallbacks& query() override { return query_; }

 private:
  SharedObject object_;  // unloaded last
  IPluginCallbacks& callbacks_;
  IPluginBasicQueryCallbacks& query_;
};

}  // namespace

PluginLoadError::~PluginLoadError() = default;

LoadedPlugin::~LoadedPlugin() = default;

PluginLoader::PluginLoader() { setPluginManager(boost::make_shared<TPluginManagerNamespace>()); }

PluginLoader::~PluginLoader() { setPluginManager(nullptr); }

std::unique_ptr<LoadedPlugin> PluginLoader::load(const std::filesystem::path& file) {
  const auto manager =
      boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager());
  manager->registered_.clear();
  SharedObject object = openSharedObject(file);
  const auto plugins = std::exchange(manager->registered_, {});
  if (plugins.empty()) refuse(file, "it registers no plug-in");
  auto* query = dynamic_cast<IPluginBasicQueryCallbacks*>(plugins.front());
  if (plugins.size() == 1 && query != nullptr) {
    return std::make_unique<PluginInProcess>(std::move(object), *plugins.front(), *query);
  }
  endPlugins(plugins);
  refuse(file, plugins.size() == 1
                   ? "its plug-in answers no queries (IPluginBasicQueryCallbacks)"
                   : "it registers " + std::to_string(plugins.size()) + " plug-ins, not one");
}

}  // namespace NKRXVEL20::host
