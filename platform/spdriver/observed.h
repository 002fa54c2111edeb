// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "velhost/trafficobserver.h"

namespace NKRXVEL20::host {

// The one that the host set; null: none.
TrafficObserver* trafficObserver();

}  // namespace NKRXVEL20::host
