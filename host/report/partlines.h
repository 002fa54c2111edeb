// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "host/report/machineview.h"

namespace velhost {

// What says most of a part, of the properties that it has: size, maker, part and serial number, what
// is wrong with it. The schema's names of properties tell, so they count for a class of somebody
// else's too.
std::vector<Fact> partLines(const NKRXVEL20::host::PublishedInstance& instance,
                            const std::vector<Fact>& properties);

}  // namespace velhost
