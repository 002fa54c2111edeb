// SPDX-License-Identifier: Apache-2.0
//
// The FRU devices of a BMC and what stands in them.
#pragma once

#include <string>
#include <vector>

#include "collectors/ipmiinventory/bmc.h"
#include "collectors/ipmiinventory/fruarea.h"
#include "collectors/ipmiinventory/sdrrecord.h"

namespace ipmiinventory {

struct Fru {
  FruLocator locator;
  std::vector<FruProperty> properties;
  std::string notes;  // what was wrong, in words; empty: nothing
};

// One for each device that is located, in their order, and one for device 0 where that is there and
// none locates it.
std::vector<Fru> readFrus(Bmc& bmc, const std::vector<FruLocator>& locators);

}  // namespace ipmiinventory
