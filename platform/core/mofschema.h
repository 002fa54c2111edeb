// SPDX-License-Identifier: Apache-2.0
//
// A schema made of what MOF files declare.
#pragma once

#include "mofsource.h"
#include "velhost/schema.h"

namespace NKRXVEL20::mof {

// Throws SchemaError for what is not taken and for what contradicts itself or DSP0004.
host::SchemaPtr schemaOf(Source source);

}  // namespace NKRXVEL20::mof
