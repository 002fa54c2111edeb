// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>

#include "vel/cim.h"
#include "vel/export.h"
#include "vel/log.h"

namespace NKRXVEL20 {

// The framework's root: where a plug-in finds the logger and the plug-in manager.
class VEL_API TRootObject {
 public:
  // Lives as long as the process.
  static ICoreLogger& GetCoreLogger();

  // The plug-in manager's namespace (TPluginManagerNamespace), null before a host sets it up.
  static boost::shared_ptr<ICIMNamespace> GetPluginManager();
};

}  // namespace NKRXVEL20
