// SPDX-License-Identifier: Apache-2.0
#include "velhost/pluginloader.h"

#include <dlfcn.h>

#include <boost/make_shared.hpp>
#include <exception>
#include <string>
#include <utility>

#include "vel/pluginmanager.h"
#include "vel/rootobject.h"
#include "velhost/rootobject.h"

namespace NKRXVEL20::host {
namespace {

struct CloseSharedObject {
  void operator()(void* handle) const { dlclose(handle); }
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
  } catch (const std::exception& error) {
    refuse(file, std::string("its static constructors failed: ") + error.what());
  }
  if (object == nullptr) refuse(file, loaderReason(path));
  return object;
}

// A destructor must not throw, and one step that fails must not keep the next from being taken.
template <typename Step>
void logFailure(const char* name, Step step) {
  try {
    step();
  } catch (const std::exception& error) {
    TRootObject::GetCoreLogger().Log(kSeverityFailure,
                                     std::string(name) + " failed: " + error.what());
  }
}

class PluginInProcess : public LoadedPlugin {
 public:
  PluginInProcess(SharedObject object, IPluginCallbacks& callbacks,
                  IPluginBasicQueryCallbacks& query)
      : object_(std::move(object)), callbacks_(callbacks), query_(query) {}

  ~PluginInProcess() override {
    logFailure("DeInit", [this] { callbacks_.DeInit(); });
    logFailure("PrepareForUnload", [this] { callbacks_.PrepareForUnload(); });
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
  manager->registered_ = nullptr;
  SharedObject object = openSharedObject(file);
  IPluginCallbacks* plugin = std::exchange(manager->registered_, nullptr);
  if (plugin == nullptr) refuse(file, "it registers no plug-in");
  auto* query = dynamic_cast<IPluginBasicQueryCallbacks*>(plugin);
  if (query == nullptr) {
    plugin->PrepareForUnload();
    refuse(file, "its plug-in answers no queries (IPluginBasicQueryCallbacks)");
  }
  return std::make_unique<PluginInProcess>(std::move(object), *plugin, *query);
}

}  // namespace NKRXVEL20::host
