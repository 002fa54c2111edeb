// SPDX-License-Identifier: Apache-2.0
#include "loggingplugin.h"

namespace NKRXVEL20 {
namespace {

[[gnu::constructor]] void registerPlugin() { new LoggingPlugin(); }

}  // namespace
}  // namespace NKRXVEL20
