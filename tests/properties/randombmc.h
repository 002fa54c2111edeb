// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/properties/randompieces.h"

namespace velhost::properties {

// The IPMI commands that a BMC answers: what it is, its repository of sensor data records, FRU devices
// with areas of all encodings, and a cKVM. Inside rc::gen::exec alone.
Json someBmc(const Identities& identities);

}  // namespace velhost::properties
