// SPDX-License-Identifier: Apache-2.0
//
// Names of classes as people type them.
#pragma once

#include <string>

#include "velhost/schema.h"

namespace velhost {

// The class of that name. Throws InputError, with what may have been meant, when the schema has none.
const NKRXVEL20::host::ClassSchema* schemaClass(const std::string& name);

}  // namespace velhost
