// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vel/export.h"

namespace spyplatform {

// From now on there is a plug-in manager; state().registered tells which plug-in it knows.
VEL_API void installPluginManager();

}  // namespace spyplatform
