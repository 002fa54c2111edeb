// SPDX-License-Identifier: Apache-2.0
//
// How a requested class ended, worked out from where the schema says that its values come from and
// from what was seen of these sources. Nothing here knows any particular class.
#pragma once

#include "host/reasons/observations.h"

namespace velhost {

ClassState stateOf(const NKRXVEL20::host::ClassSchema& cimClass, const ClassOutcome& outcome,
                   const Observations& seen);

// Each step on the way to the class's instances that failed, a line each: not only the worst, and
// each command by itself.
std::vector<std::string> failedSteps(const NKRXVEL20::host::ClassSchema& cimClass,
                                     const ClassOutcome& outcome, const Observations& seen);

}  // namespace velhost
