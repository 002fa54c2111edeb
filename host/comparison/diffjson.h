// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/comparison/difftable.h"

namespace velhost {

// The difference document ("vel-diff/1"): both machines, and each class that is different or cannot be
// compared, with plain values.
std::string differenceJson(const ComparedFile& before, const ComparedFile& after,
                           const Comparison& comparison);

}  // namespace velhost
