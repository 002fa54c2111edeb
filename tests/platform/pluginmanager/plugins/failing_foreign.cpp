// SPDX-License-Identifier: Apache-2.0
#include "loggingplugin.h"

namespace NKRXVEL20 {
namespace {

class FailingPlugin : public LoggingPlugin, public IPluginBasicQueryCallbacks {
 public:
  void DeInit() override { throw 42; }
  void PrepareForUnload() override {
    LoggingPlugin::PrepareForUnload();
    throw 42;
  }
  void GetData(boost::shared_ptr<ICIMNamespace> /*ns*/,
               std::vector<boost::shared_ptr<ICIMClass>>& /*classes*/) override {}
};

[[gnu::constructor]] void registerPlugin() { new FailingPlugin(); }

}  // namespace
}  // namespace NKRXVEL20
