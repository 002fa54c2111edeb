// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/properties/randompieces.h"

namespace velhost::properties {

// The section "smbios" of a machine file: structures of the types that collectors read, with all their
// fields or cut short, and of others; some of them malformed. Inside rc::gen::exec alone.
Json someSmbios(const Identities& identities);

}  // namespace velhost::properties
