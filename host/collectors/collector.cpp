// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collector.h"

#include <stdexcept>

#include "host/collectors/requesterror.h"
#include "host/files/ownersfile.h"
#include "vel/plugin.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

std::unique_ptr<host::LoadedPlugin> loaded(host::PluginLoader& loader,
                                           const std::filesystem::path& file) {
  if (const auto reason = whyRootRefuses(file)) throw host::PluginLoadError(*reason);
  return loader.load(file);
}

// What could not be asked of the plug-in is told without its exception, which goes with it.
PluginIdentity identityOf(NKRXVEL20::IPluginCallbacks& plugin) {
  std::string failure;
  try {
    return {plugin.GetName(), plugin.GetVersion(), plugin.GetInterfaceVersion(), plugin.GetType()};
  } catch (...) {
    failure = errorText(describeCurrentException());
  }
  throw std::runtime_error("the plug-in does not say who it is: " + failure);
}

// Says that something goes on while it lives.
class Flag {
 public:
  explicit Flag(bool& flag) : flag_(flag) { flag = true; }
  ~Flag() { flag_ = false; }
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;

 private:
  bool& flag_;
};

}  // namespace

Collector::Collector(host::PluginLoader& loader, const std::filesystem::path& file)
    : file_(file), plugin_(loaded(loader, file)), identity_(identityOf(plugin_->callbacks())) {}

void Collector::ask(const boost::shared_ptr<host::CimNamespace>& ns,
                    const std::vector<std::string>& classes) {
  const Flag asking(isBeingAsked_);
  if (!isInitialised_) {
    plugin_->callbacks().Init();
    isInitialised_ = true;
  }
  std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>> handles;
  handles.reserve(classes.size());
  for (const std::string& name : classes) handles.push_back(ns->requestClass(name));
  plugin_->query().GetData(ns, handles);
}

}  // namespace velhost
