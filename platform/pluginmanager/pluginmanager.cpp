// SPDX-License-Identifier: Apache-2.0
#include "vel/pluginmanager.h"

#include "vel/exception.h"

namespace NKRXVEL20 {

TPluginManagerNamespace::TPluginManagerNamespace() = default;
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) { registered_ = plugin; }

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string& name,
                                                               TCIMValueMap /*context*/) {
  throw TVELException(kErrorClassNotFound, "the plug-in manager has no class " + name);
}

}  // namespace NKRXVEL20
