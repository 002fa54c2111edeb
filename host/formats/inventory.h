// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// The inventory document ("vel-inventory/1"): the machine, the collectors, and each requested class
// with its state, the reason and its instances with plain values. Throws std::logic_error as
// classEntries does.
std::string inventoryText(const QueryContext& context, const QueryResult& result);

}  // namespace velhost
