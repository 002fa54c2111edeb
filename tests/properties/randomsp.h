// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/properties/randompieces.h"

namespace velhost::properties {

// The section "sp" of a machine file: SPs of each kind, what they say to the firmware collector's
// commands, and a BMC. Inside rc::gen::exec alone.
Json someSP(const Identities& identities);

}  // namespace velhost::properties
