// SPDX-License-Identifier: Apache-2.0
#include <boost/pointer_cast.hpp>

#include "vel/pluginmanager.h"
#include "vel/rootobject.h"

namespace NKRXVEL20 {
namespace {

[[gnu::constructor]] void registerNull() {
  boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
      ->RegisterPlugin(nullptr);
}

}  // namespace
}  // namespace NKRXVEL20
