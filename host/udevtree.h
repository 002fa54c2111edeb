// SPDX-License-Identifier: Apache-2.0
//
// The devices of the machine that the program runs on, read through libudev.
#pragma once

#include <memory>

#include "host/devicetree.h"

namespace velhost {

// Without libudev's help (it has no memory left) the tree is empty.
std::unique_ptr<DeviceTree> makeUdevTree();

}  // namespace velhost
