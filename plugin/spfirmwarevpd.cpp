// SPDX-License-Identifier: Apache-2.0
//
// The one file that the shared object adds to the collectors: it registers the plug-in when the
// object is loaded.
#include "plugin/spfirmwarevpd.h"

#include <iostream>  // its stream initialiser runs before anything below: statics run in unit order

namespace {

// Nobody owns the object: it registers itself and deletes itself in PrepareForUnload. Kept out of
// line so that a failing load shows this name.
[[gnu::noinline]] void SPFirmwareVpdInit() {
  new SPFirmwareVpd();  // NOLINT(cppcoreguidelines-owning-memory)
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

[[maybe_unused]] const bool kRegistered = (SPFirmwareVpdInit(), true);

}  // namespace
