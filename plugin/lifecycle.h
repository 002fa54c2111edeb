// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vel/plugin.h"

namespace spfirmwarevpd {

inline constexpr char kPluginVersion[] = "1.0";

// Ends the life of a plug-in object; null is allowed.
void release(NKRXVEL20::IPluginCallbacks* plugin);

}  // namespace spfirmwarevpd
