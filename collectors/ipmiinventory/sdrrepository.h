// SPDX-License-Identifier: Apache-2.0
//
// The walk through a BMC's sensor data record repository (IPMI 2.0, 33).
#pragma once

#include <string>
#include <vector>

#include "collectors/ipmiinventory/bmc.h"
#include "collectors/ipmiinventory/sdrrecord.h"

namespace ipmiinventory {

struct FruLocators {
  std::vector<FruLocator> locators;  // by FRU device ID; of several for one the first
  std::string fault;                 // why there may be more, in words; empty: these are all
};

// Each record is read by one command; where that is too much for the BMC, each locator in pieces and
// of the others the header. The walk ends where a record leads back, or cannot be read.
FruLocators readFruLocators(Bmc& bmc);

}  // namespace ipmiinventory
