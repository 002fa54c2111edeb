// SPDX-License-Identifier: Apache-2.0
#include "vel/plugin.h"

namespace NKRXVEL20 {

// Here, so that each interface has one identity and a cast from one to the other works across
// shared objects.
IPluginCallbacks::~IPluginCallbacks() = default;
IPluginBasicQueryCallbacks::~IPluginBasicQueryCallbacks() = default;

}  // namespace NKRXVEL20
