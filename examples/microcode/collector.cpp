// SPDX-License-Identifier: Apache-2.0
//
// The collector: reads the kernel's text, publishes what cpuinfo.h makes of it.
#include <boost/pointer_cast.hpp>
#include <fstream>

#include "cpuinfo.h"
#include "vel/exception.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"

namespace microcode {
namespace {

using namespace NKRXVEL20;

#ifdef CPUINFO
constexpr char kCpuinfo[] = CPUINFO;
#else
constexpr char kCpuinfo[] = "/proc/cpuinfo";
#endif

constexpr char kClass[] = "ACME_ProcessorMicrocode";
constexpr std::uint16_t kRunning = 3;         // Values of the two properties
constexpr std::uint16_t kNotApplicable = 66;  // in CIM_SoftwareElement

// An empty text leaves the property unset.
void setText(ICIMInstance& instance, const char* property, const std::string& text) {
  if (!text.empty()) instance.SetProperty(property, TCIMValue(text), {});
}

void publish(ICIMClass& cimClass, const Microcode& microcode) {
  const auto instance = cimClass.CreateInstance();
  instance->SetProperty("Package", TCIMValue(microcode.package), {});
  setText(*instance, "Processor", microcode.processor);
  setText(*instance, "Version", microcode.revision);
  setText(*instance, "SoftwareElementID", microcode.signature);
  instance->SetProperty("SoftwareElementState", TCIMValue(kRunning), {});
  instance->SetProperty("TargetOperatingSystem", TCIMValue(kNotApplicable), {});
  instance->AddToClass({});
}

void collect(ICIMClass& cimClass) {
  std::ifstream cpuinfo(kCpuinfo);
  if (!cpuinfo) {
    TRootObject::GetCoreLogger().Log(kSeverityFailure, std::string(kCpuinfo) + " cannot be read");
    return;
  }
  for (const Microcode& microcode : microcodeOf(cpuinfo)) publish(cimClass, microcode);
}

class Collector : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
 public:
  Collector() {
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(this);
  }

  int GetType() override { return 0; }
  std::string GetName() override { return "Microcode"; }
  std::string GetVersion() override { return "1.0"; }
  std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
  void PrepareForUnload() override { delete this; }
  void Init() override {}
  void DeInit() override {}

  void GetData(boost::shared_ptr<ICIMNamespace> /*ns*/,
               std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    for (const auto& cimClass : classes) {
      const std::string name = cimClass->GetName({});
      if (name != kClass) throw TVELException(kErrorClassNotServed, name + " is not served");
      collect(*cimClass);
    }
  }
};

// Nobody owns it: it registers itself when the shared object is loaded, and ends in PrepareForUnload.
[[maybe_unused]] const auto* const kRegistered = new Collector;

}  // namespace
}  // namespace microcode
