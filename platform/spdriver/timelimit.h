// SPDX-License-Identifier: Apache-2.0
//
// The limit that the host set (velhost/commandtime.h).
#pragma once

#include <optional>

#include "velhost/commandtime.h"

namespace NKRXVEL20::host {

std::optional<TimePoint> timeLimit();

// False without a limit.
bool isTimeOver();

}  // namespace NKRXVEL20::host
