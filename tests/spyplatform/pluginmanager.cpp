// SPDX-License-Identifier: Apache-2.0
//
// libplugin.nsp.so once more: the plug-in manager.
#include "tests/spyplatform/pluginmanager.h"

#include <boost/make_shared.hpp>

#include "tests/spyplatform/recorder.h"
#include "vel/pluginmanager.h"

namespace NKRXVEL20 {

TPluginManagerNamespace::TPluginManagerNamespace() = default;
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) {
  spyplatform::begin("RegisterPlugin",
                     plugin == nullptr ? "RegisterPlugin(null)"
                                       : "RegisterPlugin(" + spyplatform::nextName("plug-in") + ")")
      .writeDown();
  spyplatform::state().registered = plugin;
}

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string& name,
                                                               TCIMValueMap /*context*/) {
  spyplatform::begin("GetClass", "plug-in manager.GetClass(" + spyplatform::quoted(name) + ")")
      .writeDown();
  return {};
}

}  // namespace NKRXVEL20

namespace spyplatform {

void installPluginManager() {
  state().pluginManager = boost::make_shared<NKRXVEL20::TPluginManagerNamespace>();
}

}  // namespace spyplatform
