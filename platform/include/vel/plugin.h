// SPDX-License-Identifier: Apache-2.0
//
// The interfaces through which the framework drives a plug-in. The order of the virtual operations
// is part of the binary interface.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "vel/cim.h"
#include "vel/export.h"

namespace NKRXVEL20 {

// The version of these interfaces that a plug-in was compiled against; each plug-in has its own copy.
constexpr char fdrPluginInterfaceVersion[] = "1.0";

// Identity and lifecycle. A plug-in object registers itself when its shared object is loaded and
// ends its own life in PrepareForUnload; the framework must not touch it afterwards.
class VEL_API IPluginCallbacks {
 public:
  virtual ~IPluginCallbacks();
  virtual int GetType() = 0;
  virtual std::string GetName() = 0;
  virtual std::string GetVersion() = 0;
  virtual std::string GetInterfaceVersion() = 0;
  virtual void PrepareForUnload() = 0;
  virtual void Init() = 0;
  virtual void DeInit() = 0;
};

// The query entry. Publishes the instances of the classes asked for by adding them to their class.
// Raises TVELException with kErrorClassNotServed for a class that the plug-in does not serve.
class VEL_API IPluginBasicQueryCallbacks {
 public:
  virtual ~IPluginBasicQueryCallbacks();
  virtual void GetData(boost::shared_ptr<ICIMNamespace> ns,
                       std::vector<boost::shared_ptr<ICIMClass>>& classes) = 0;
};

}  // namespace NKRXVEL20
