// SPDX-License-Identifier: Apache-2.0
//
// The BMC that the SP driver reaches.
#pragma once

#include <memory>

#include "collectors/ipmiinventory/bmc.h"

namespace ipmiinventory {

std::unique_ptr<Bmc> makeSpBmc();

}  // namespace ipmiinventory
