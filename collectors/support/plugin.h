// SPDX-License-Identifier: Apache-2.0
//
// What every plug-in does in the same way: it makes itself known, and refuses a class.
#pragma once

#include <string>

#include "vel/plugin.h"

namespace collector {

// Makes the plug-in known to the plug-in manager. Raises TVELException when there is none.
void registerPlugin(NKRXVEL20::IPluginCallbacks* plugin);

// Raises TVELException with kErrorClassNotServed.
[[noreturn]] void refuseClass(const std::string& className);

}  // namespace collector
