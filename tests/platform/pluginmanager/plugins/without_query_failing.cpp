// SPDX-License-Identifier: Apache-2.0
#include "loggingplugin.h"

namespace NKRXVEL20 {
namespace {

class FailingPlugin : public LoggingPlugin {
 public:
  void PrepareForUnload() override {
    LoggingPlugin::PrepareForUnload();
    throw 42;
  }
};

[[gnu::constructor]] void registerPlugin() { new FailingPlugin(); }

}  // namespace
}  // namespace NKRXVEL20
