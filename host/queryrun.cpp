// SPDX-License-Identifier: Apache-2.0
#include "host/queryrun.h"

#include <array>
#include <boost/make_shared.hpp>
#include <stdexcept>
#include <utility>

#include "host/requesterror.h"
#include "vel/plugin.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

constexpr std::array<std::string_view, 11> kDefaultClasses{
    "KRXSG_DiagnosticVPD",
    "KRXSG_PostBIOSVPD",
    "KRXSG_SystemBIOSElement",
    "KRXSG_HardwareRevisionLevel",
    "KRXSG_Vpd",
    "KRXSG_SPROMFirmwareVPDMain",
    "KRXSG_SPROMFirmwareVPDBootROM",
    "KRXSG_DeviceDriver",
    "KRXSG_SystemBIOS",
    "KRXSG_cKVM",
    "KRXSG_USBTapeFirmwareElement",
};

// What could not be asked of the plug-in is told without its exception, which goes with it.
PluginIdentity identityOf(NKRXVEL20::IPluginCallbacks& plugin) {
  std::string failure;
  try {
    return {plugin.GetName(), plugin.GetVersion(), plugin.GetInterfaceVersion(), plugin.GetType()};
  } catch (...) {
    failure = errorText(describeCurrentException());
  }
  throw std::runtime_error("the plug-in does not say who it is: " + failure);
}

}  // namespace

std::vector<std::string> defaultClasses() {
  return {kDefaultClasses.begin(), kDefaultClasses.end()};
}

QueryRun::PlatformGuard::~PlatformGuard() {
  host::setCoreLogSink({});
  host::setFailureLogSink({});
  host::setSPLibrary(nullptr);
  host::setSmbiosTable(std::nullopt);
  host::setMachineType(std::nullopt);
}

QueryRun::QueryRun(Machine machine, RunOptions options) : options_(std::move(options)) {
  context_.machineSource = machine.source;
  context_.machineName = machine.name;
  installPlatform(std::move(machine));
  plugin_ = loader_.load(options_.plugin);
  context_.plugin = identityOf(plugin_->callbacks());
}

QueryRun::~QueryRun() = default;

void QueryRun::installPlatform(Machine machine) {
  namespace_ = boost::make_shared<host::CimNamespace>(machine.missingClasses, machine.faults);
  for (const Companion& companion : machine.companions) {
    namespace_->addCompanion(companion.className, companion.properties);
  }
  host::setMachineType(std::move(machine.machineType));
  host::setSmbiosTable(std::move(machine.smbios));
  host::setSPLibrary(std::move(machine.sp),
                     options_.keepTraffic ? host::Traffic::kKept : host::Traffic::kForgotten);
  host::setCoreLogSink([this](const host::LogEntry& entry) {
    if (options_.keepLogs) coreLog_.push_back(entry);
    if (options_.onCoreLog) options_.onCoreLog(entry);
  });
  if (!options_.keepLogs) return;
  host::setFailureLogSink([this](const host::LogEntry& entry) { failureLog_.push_back(entry); });
}

void QueryRun::ask(const std::vector<std::string>& classes, bool init) {
  if (init || !initialised_) {
    initialised_ = false;
    plugin_->callbacks().Init();
    initialised_ = true;
  }
  std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>> handles;
  handles.reserve(classes.size());
  for (const std::string& name : classes) handles.push_back(namespace_->requestClass(name));
  plugin_->query().GetData(namespace_, handles);
}

QueryResult QueryRun::request(const std::vector<std::string>& classes, bool init) {
  QueryResult result;
  result.requested = classes;
  try {
    ask(classes, init);
  } catch (...) {
    result.error = describeCurrentException();
  }
  result.instances = namespace_->takePublished();
  result.coreLog = std::exchange(coreLog_, {});
  result.failureLog = std::exchange(failureLog_, {});
  result.traffic = host::takeTraffic();
  return result;
}

}  // namespace velhost
