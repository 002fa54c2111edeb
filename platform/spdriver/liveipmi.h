// SPDX-License-Identifier: Apache-2.0
//
// makeLiveIpmi() of velhost/spdriver.h, over system calls of the caller's choice.
#pragma once

#include "systemcalls.h"
#include "velhost/spdriver.h"

namespace NKRXVEL20::host {

// The calls must outlive the library.
LiveIpmi makeLiveIpmi(SystemCalls& calls);

}  // namespace NKRXVEL20::host
