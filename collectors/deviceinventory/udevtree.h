// SPDX-License-Identifier: Apache-2.0
//
// The devices of the machine that the program runs on, read through libudev.
#pragma once

#include <memory>

#include "collectors/deviceinventory/devicetree.h"

namespace deviceinventory {

// Without libudev's help (it has no memory left) the tree is empty.
std::unique_ptr<DeviceTree> makeUdevTree();

}  // namespace deviceinventory
