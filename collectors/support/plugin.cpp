// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/plugin.h"

#include <boost/pointer_cast.hpp>

#include "vel/exception.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"

using namespace NKRXVEL20;

namespace collector {

// No test for null: the access through a null manager raises "px != 0".
void registerPlugin(IPluginCallbacks* plugin) {
  boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
      ->RegisterPlugin(plugin);
}

void refuseClass(const std::string& className) {
  throw TVELException(kErrorClassNotServed, "class " + className + " is not served");
}

}  // namespace collector
