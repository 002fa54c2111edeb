// SPDX-License-Identifier: Apache-2.0
//
// Documents of a query's formats, read back. Members that no reader needs may stand in them.
#pragma once

#include <string>

#include "host/machine/jsondocument.h"
#include "host/results/findings.h"

namespace velhost {

inline constexpr std::string_view kInventoryFormat = "vel-inventory/1";
inline constexpr std::string_view kResultFormat = "vel-result/1";

// Each throws DocumentError.
Findings inventoryFindings(const Json& document);
Findings resultFindings(const Json& document);  // of the last query
Findings plainFindings(const Json& document, const std::string& machineName);

}  // namespace velhost
