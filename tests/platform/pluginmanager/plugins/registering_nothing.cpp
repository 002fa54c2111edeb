// SPDX-License-Identifier: Apache-2.0
#include "vel/rootobject.h"

namespace NKRXVEL20 {
namespace {

[[gnu::constructor]] void registerNothing() {
  TRootObject::GetCoreLogger().Log(kSeverityProgress, "loaded");
}

}  // namespace
}  // namespace NKRXVEL20
