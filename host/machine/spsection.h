// SPDX-License-Identifier: Apache-2.0
//
// The "sp" section of a machine file.
#pragma once

#include "host/machine/jsondocument.h"
#include "velhost/spdriver.h"

namespace velhost {

// Throws DocumentError.
NKRXVEL20::host::SimulatedSP readSpSection(const Cursor& at);

}  // namespace velhost
