// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/machine/jsondocument.h"
#include "vel/cimvalue.h"

namespace velhost {

// The value at the cursor as that type. Throws DocumentError for one of another kind or out of range.
NKRXVEL20::TCIMValue cimValue(const Cursor& at, NKRXVEL20::ECIMType type);

}  // namespace velhost
