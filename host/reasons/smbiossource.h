// SPDX-License-Identifier: Apache-2.0
//
// What the SMBIOS structures that a class's values come from have to say.
#pragma once

#include <span>

#include "host/reasons/observations.h"
#include "host/reasons/origin.h"

namespace velhost {

// That the tables cannot be read at all; otherwise not looked.
Verdict smbiosTrouble(const Observations& seen);

Verdict smbiosVerdict(std::span<const Origin> origins, const Observations& seen);

}  // namespace velhost
