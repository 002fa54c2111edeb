// SPDX-License-Identifier: Apache-2.0
//
// FRU devices and the records that locate them, put together from the replies of a BMC.
#pragma once

#include <vector>

#include "host/explanation/evidence.h"

namespace velhost {

// In the order of their numbers. Bytes that were not read are zero; of devices with the same number
// at several LUNs the last one read counts.
std::vector<FruDevice> fruDevices(const std::vector<Reply>& replies);

}  // namespace velhost
