// SPDX-License-Identifier: Apache-2.0
//
// From what was said to an SP or BMC to a description that answers the same.
#pragma once

#include <vector>

#include "velhost/spdriver.h"

namespace velhost {

// Puts an entry into `sp` for each command that was sent, in the order in which each was first
// sent. A command whose answers changed gets them in turn. Its data stands in the entry only where
// it makes a difference.
void addCommands(const std::vector<NKRXVEL20::host::TrafficEntry>& traffic,
                 NKRXVEL20::host::SimulatedSP& sp);

}  // namespace velhost
