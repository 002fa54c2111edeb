// SPDX-License-Identifier: Apache-2.0
//
// Values that stand in for those that could not be read.
#pragma once

#include <optional>

#include "host/reasons/observations.h"
#include "host/reasons/origin.h"

namespace velhost {

// Behind the value in the reason of a class that has one.
inline constexpr char kIsFixedValue[] = " is a fixed value: ";

// "1.3.11.37 is a fixed value: the BMC refused command 06 52 with completion code C1": what a
// property has from a Constant.VEL line although another line, under the same conditions, has it read
// by a command. nullopt: there is none.
std::optional<std::string> fixedValueReason(const NKRXVEL20::host::ClassSchema& cimClass,
                                            const ClassOutcome& outcome, const Observations& seen);

}  // namespace velhost
