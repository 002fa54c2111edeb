// SPDX-License-Identifier: Apache-2.0
//
// What a framework's other collectors publish of the machine that the program runs on.
#pragma once

#include <vector>

#include "host/devicetree.h"
#include "host/machinefile.h"

namespace velhost {

// A KRXSG_USBDevice for each USB device, hubs too, then a KRXSG_TapeDrive for each tape drive, both
// in the order of their paths. An attribute that cannot be read leaves its text out, a device of
// which nothing can be read is left out itself.
std::vector<Companion> liveCompanions(DeviceTree& tree);

}  // namespace velhost
