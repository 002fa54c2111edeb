// SPDX-License-Identifier: Apache-2.0
//
// What other collectors' instances have to say, which a class's values come from.
#pragma once

#include <span>
#include <string_view>

#include "host/reasons/observations.h"
#include "host/reasons/origin.h"

namespace velhost {

// "the framework refused get_class of KRXSG_Vpd twice"
std::string refusedCallText(const NKRXVEL20::host::RefusedCall& call);

// The first call of the class that was refused; null: none.
const NKRXVEL20::host::RefusedCall* firstRefusedCall(std::string_view className,
                                                     const Observations& seen);

Verdict instanceVerdict(std::span<const Origin> origins, const Observations& seen);

// A line that tells of a class's every instance, with the rule "has TEXT": whether one of the other
// class has the text in its property.
Verdict presenceVerdict(const Origin& origin, const Observations& seen);

}  // namespace velhost
