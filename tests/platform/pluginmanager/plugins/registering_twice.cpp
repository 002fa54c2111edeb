// SPDX-License-Identifier: Apache-2.0
#include "loggingplugin.h"

namespace NKRXVEL20 {
namespace {

class AnsweringPlugin : public LoggingPlugin, public IPluginBasicQueryCallbacks {
 public:
  AnsweringPlugin() {
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(this);
  }
  void GetData(boost::shared_ptr<ICIMNamespace> /*ns*/,
               std::vector<boost::shared_ptr<ICIMClass>>& /*classes*/) override {}
};

[[gnu::constructor]] void registerPlugin() { new AnsweringPlugin(); }

}  // namespace
}  // namespace NKRXVEL20
