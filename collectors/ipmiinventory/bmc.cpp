// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/bmc.h"

#include "collectors/ipmiinventory/ipmitext.h"

namespace ipmiinventory {

std::string completionText(std::uint8_t code) { return "completion code " + hexByte(code) + 'h'; }

}  // namespace ipmiinventory
