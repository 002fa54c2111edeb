// SPDX-License-Identifier: Apache-2.0
//
// The one file that the shared object adds to the collector: it registers the plug-in when the
// object is loaded.
#include "collectors/ipmiinventory/ipmiinventory.h"
#include "collectors/ipmiinventory/spbmc.h"

namespace {

// Nobody owns the object: it registers itself and deletes itself in PrepareForUnload.
[[maybe_unused]] const auto* const kRegistered =
    new ipmiinventory::IpmiInventory(ipmiinventory::makeSpBmc());

}  // namespace
