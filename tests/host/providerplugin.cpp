// SPDX-License-Identifier: Apache-2.0
//
// A collector for the host's tests that provides classes under a name of the schema. Each of its
// classes needs another one first, so that questions go on from one collector to the next.
#include <boost/pointer_cast.hpp>
#include <map>
#include <string>

#include "vel/exception.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"

namespace {

using namespace NKRXVEL20;
using Namespace = boost::shared_ptr<ICIMNamespace>;

// By class: the class that it enumerates first; none for a class that needs no other.
const std::map<std::string, std::string>& needs() {
  static const std::map<std::string, std::string> kNeeds{
      {"KRXSG_USBDevice", ""},
      {"KRXSG_TapeDrive", "KRXSG_IPMIFRU"},
      {"KRXSG_IPMIFRU", "KRXSG_TapeDrive"},
  };
  return kNeeds;
}

std::size_t countOf(const Namespace& ns, const std::string& name) {
  std::vector<boost::shared_ptr<ICIMInstance>> instances;
  ns->GetClass(name, {})->GetInstances(TAddToVectorCallback<ICIMInstance>(instances), true, {});
  return instances.size();
}

class Provider : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
 public:
  Provider() {
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(this);
  }

  int GetType() override { return 0; }
  std::string GetName() override { return PLUGIN_NAME; }
  std::string GetVersion() override { return "1.0"; }
  std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
  void PrepareForUnload() override { delete this; }
  void Init() override {}
  void DeInit() override {}

  // Its one instance tells who made it, and how many of the other class there were.
  void GetData(Namespace ns, std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    for (const auto& cimClass : classes) {
      const std::string name = cimClass->GetName({});
      TRootObject::GetCoreLogger().Log(kSeverityProgress, PLUGIN_NAME " asked for " + name);
      const auto need = needs().find(name);
      if (need == needs().end()) throw TVELException(kErrorClassNotServed, "not served");
      std::string text = PLUGIN_NAME;
      if (!need->second.empty()) text += " " + std::to_string(countOf(ns, need->second));
      const auto instance = cimClass->CreateInstance();
      instance->SetProperty("Description", TCIMValue(text), {});
      instance->AddToClass({});
    }
  }
};

const Provider* const kRegistered = new Provider;

}  // namespace
