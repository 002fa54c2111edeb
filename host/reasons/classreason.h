// SPDX-License-Identifier: Apache-2.0
//
// How a requested class ended, worked out from where the schema says that its values come from and
// from what was seen of these sources. Nothing here knows any particular class.
#pragma once

#include "host/reasons/observations.h"

namespace velhost {

ClassState stateOf(const NKRXVEL20::host::ClassSchema& cimClass, const ClassOutcome& outcome,
                   const Observations& seen);

}  // namespace velhost
