// SPDX-License-Identifier: Apache-2.0
#include "vel/rootobject.h"

#include <utility>

#include "velhost/rootobject.h"

namespace NKRXVEL20 {
namespace {

boost::shared_ptr<ICIMNamespace>& pluginManager() {
  static boost::shared_ptr<ICIMNamespace> manager;
  return manager;
}

}  // namespace

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() { return pluginManager(); }

void host::setPluginManager(boost::shared_ptr<ICIMNamespace> manager) {
  pluginManager() = std::move(manager);
}

}  // namespace NKRXVEL20
