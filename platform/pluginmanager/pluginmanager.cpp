// SPDX-License-Identifier: Apache-2.0
#include "vel/pluginmanager.h"

#include <algorithm>

#include "vel/exception.h"

namespace NKRXVEL20 {

TPluginManagerNamespace::TPluginManagerNamespace() = default;
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) {
  if (plugin == nullptr || std::ranges::count(registered_, plugin) != 0) return;
  registered_.push_back(plugin);
}

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string& name,
                                                               TCIMValueMap /*context*/) {
  throw TVELException(kErrorClassNotFound, "the plug-in manager has no class " + name);
}

}  // namespace NKRXVEL20
