// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "vel/cim.h"
#include "vel/export.h"
#include "vel/plugin.h"

namespace NKRXVEL20 {

namespace host {
class PluginLoader;
}

// The plug-in manager as plug-ins see it: TRootObject::GetPluginManager() hands it out as a
// namespace, which has no classes of its own.
class VEL_API TPluginManagerNamespace : public ICIMNamespace {
 public:
  TPluginManagerNamespace();
  ~TPluginManagerNamespace() override;

  // Makes the plug-in known; null makes none known, and the same one counts once. The manager does
  // not own it.
  void RegisterPlugin(IPluginCallbacks* plugin);

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) override;

 private:
  friend class host::PluginLoader;

  std::vector<IPluginCallbacks*> registered_;
};

}  // namespace NKRXVEL20
