// SPDX-License-Identifier: Apache-2.0
//
// The one file that the shared object adds to the collector: it registers the plug-in when the
// object is loaded.
#include "collectors/smbiosinventory/smbiosinventory.h"

namespace {

// Nobody owns the object: it registers itself and deletes itself in PrepareForUnload.
[[maybe_unused]] const auto* const kRegistered = new collector::Companion(
    smbiosinventory::kName, smbiosinventory::kVersion, smbiosinventory::servedClasses());

}  // namespace
