// SPDX-License-Identifier: Apache-2.0
//
// A collector plug-in whose classes are each collected by one function. What a companion adds is
// those functions and the line that registers it.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "collectors/support/ciminstance.h"
#include "vel/cim.h"
#include "vel/plugin.h"

namespace collector {

// Collects the instances of one class and returns them, each made by `create` and not published.
// What it throws passes to the framework.
using CreateInstance = std::function<InstanceHandle()>;
using Collect = std::function<std::vector<InstanceHandle>(const CreateInstance& create)>;

class Companion : public NKRXVEL20::IPluginCallbacks, public NKRXVEL20::IPluginBasicQueryCallbacks {
 public:
  // `classes` gives each class that is served its function. Registers the object with the plug-in
  // manager; raises TVELException when there is none.
  Companion(std::string name, std::string version, std::map<std::string, Collect> classes);
  ~Companion() override;

  Companion(const Companion&) = delete;
  Companion& operator=(const Companion&) = delete;

  int GetType() override { return 0; }
  std::string GetName() override { return name_; }
  std::string GetVersion() override { return version_; }
  std::string GetInterfaceVersion() override { return NKRXVEL20::fdrPluginInterfaceVersion; }
  void PrepareForUnload() override;  // deletes the object
  void Init() override;              // lets the next request collect anew
  void DeInit() override {}

  // A class is collected when it is asked for first and published whenever it is. Raises
  // TVELException with kErrorClassNotServed at the first class that is not served.
  void GetData(boost::shared_ptr<NKRXVEL20::ICIMNamespace> ns,
               std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>>& classes) override;

 private:
  const std::vector<InstanceHandle>& instancesOf(NKRXVEL20::ICIMClass& cimClass,
                                                 const std::string& className);

  std::string name_;
  std::string version_;
  std::map<std::string, Collect> classes_;
  std::map<std::string, std::vector<InstanceHandle>> collected_;  // since Init
};

}  // namespace collector
