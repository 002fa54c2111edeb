// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "loggingplugin.h"

namespace NKRXVEL20 {
namespace {

class FailingPlugin : public LoggingPlugin, public IPluginBasicQueryCallbacks {
 public:
  void DeInit() override { throw std::runtime_error("cannot"); }
  void GetData(boost::shared_ptr<ICIMNamespace> /*ns*/,
               std::vector<boost::shared_ptr<ICIMClass>>& /*classes*/) override {
    throw std::runtime_error("no data");
  }
};

[[gnu::constructor]] void registerPlugin() { new FailingPlugin(); }

}  // namespace
}  // namespace NKRXVEL20
