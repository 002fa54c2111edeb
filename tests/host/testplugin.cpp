// SPDX-License-Identifier: Apache-2.0
//
// A plug-in for the host's tests. The classes asked for tell it what to do, in their order; the
// machine type "INITFAIL" makes Init fail, and one that is a call's name has that call throw what
// is no std::exception.
#include <unistd.h>

#include <boost/pointer_cast.hpp>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "vel/exception.h"
#include "vel/osspecific.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"
#include "vel/splibrary.h"

namespace {

using namespace NKRXVEL20;
using Namespace = boost::shared_ptr<ICIMNamespace>;

boost::shared_ptr<ICIMInstance> create(const Namespace& ns, const std::string& name) {
  return ns->GetClass(name, {})->CreateInstance();
}

// Every type of value, a text that is no UTF-8 and one with control characters.
void publishBios(const Namespace& ns) {
  const auto instance = create(ns, "KRXSG_SystemBIOSElement");
  instance->SetProperty("Version", TCIMValue("1.08"), {});
  instance->SetProperty("Name", TCIMValue("M\xFCller\n"), {});
  instance->SetProperty("SourceNode", TCIMValue(std::uint8_t{2}), {});
  instance->SetProperty("TargetOperatingSystem", TCIMValue(std::uint16_t{36}), {});
  instance->SetProperty("LoadedEndingAddress", TCIMValue(std::uint64_t{0xFFFFFFFFFFFFFFFF}), {});
  instance->SetProperty("PrimaryBIOS", TCIMValue(true), {});
  instance->SetProperty("ReleaseDate", TCIMValue(TCIMDateTime("20070315000000.000000+000")), {});
  instance->AddToClass({});
}

void publishVpd(const Namespace& ns) {
  for (const char* const name : {"DIMM 1", "DIMM 2"}) {
    const auto instance = create(ns, "KRXSG_Vpd");
    instance->SetProperty("Name", TCIMValue(name), {});
    instance->AddToClass({});
  }
}

void sendCommands(const Namespace& /*ns*/) {
  SPLibrary& sp = *SPLibrary::GetSplibraryInstance(0);
  unsigned char reply[64] = {};
  int length = 0;
  const unsigned char path[] = {0x04, 0x03, 0x05, 0x06, 0x01};
  const unsigned char data[] = {0x0A};
  dotCmd dot(2, 5, 1, path, data);
  sp.sendDotCommand(&dot, reply, &length, 1, sizeof reply);
  TamberCmd tamber(0x01, 0xF1, 0xF1, 0x0F, nullptr, 0, false, true);
  unsigned char tamberReply[255] = {};
  sp.sendTamberCommand(&tamber, &length, tamberReply);
  unsigned char record[64] = {0x01, 0x20, 0x06, 0x00, 0x52, 0x01, 0x00, 0x00, 0x00, 0x7F};
  sp.sendIPMICommand(record, &length, sizeof record, true);
}

void writeLogs(const Namespace& /*ns*/) {
  ICoreLogger& log = TRootObject::GetCoreLogger();
  log.Log(kSeverityProgress, "progress");
  log.Log(kSeverityPrevented, "two\nlines \xFF");
  fdrWriteLog(kSeverityProgress, "not available");
}

void showCompanions(const Namespace& ns) {
  std::vector<boost::shared_ptr<ICIMInstance>> devices;
  ns->GetClass("KRXSG_USBDevice", {})
      ->GetInstances(TAddToVectorCallback<ICIMInstance>(devices), true, {});
  for (const auto& device : devices) {
    const auto instance = create(ns, "KRXSG_cKVM");
    instance->SetProperty(
        "Version", TCIMValue(device->GetProperty("Description", {})->GetValueAsString()), {});
    instance->AddToClass({});
  }
}

// Whose process it is that the plug-in has been loaded into.
void tellRights(const Namespace& /*ns*/) {
  TRootObject::GetCoreLogger().Log(
      kSeverityPrevented, "user " + std::to_string(::geteuid()) + ", group " +
                              std::to_string(::getegid()) + ", " +
                              std::to_string(::getgroups(0, nullptr)) + " other groups, back " +
                              (::setuid(0) == 0 ? "to root" : "nowhere"));
}

struct OwnError {};

void throwWhere(const std::string& call) {
  if (TOSSpecific::GetMachineTypeFromID() == call) throw 42;
}

const std::map<std::string, std::function<void(const Namespace&)>>& deeds() {
  static const std::map<std::string, std::function<void(const Namespace&)>> kDeeds{
      {"KRXSG_SystemBIOSElement", publishBios},
      {"KRXSG_Vpd", publishVpd},
      {"KRXSG_DiagnosticVPD", sendCommands},
      {"MINE_Fan", sendCommands},
      {"KRXSG_DeviceDriver", writeLogs},
      {"KRXSG_cKVM", showCompanions},
      {"KRXSG_SPROMFirmwareVPDBootROM", tellRights},
      {"KRXSG_PostBIOSVPD", [](const Namespace&) {}},
      {"KRXSG_SystemBIOS", [](const Namespace&) { throw std::runtime_error("it broke"); }},
      {"KRXSG_HardwareRevisionLevel", [](const Namespace&) { throw OwnError(); }},
      {"KRXSG_SPROMFirmwareVPDMain", [](const Namespace&) { throw 42; }},
  };
  return kDeeds;
}

class TestPlugin : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
 public:
  TestPlugin() {
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(this);
  }

  int GetType() override { return 7; }
  std::string GetName() override {
    throwWhere("GetName");
    return "TestPlugin";
  }
  std::string GetVersion() override { return "0.9"; }
  std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
  void PrepareForUnload() override {
    delete this;
    throwWhere("PrepareForUnload");
  }

  void Init() override {
    TRootObject::GetCoreLogger().Log(kSeverityProgress, "Init");
    if (TOSSpecific::GetMachineTypeFromID() == "INITFAIL") throw TVELException(40, "no Init");
    throwWhere("Init");
  }

  void DeInit() override { throwWhere("DeInit"); }

  void GetData(Namespace ns, std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    for (const auto& cimClass : classes) {
      const auto deed = deeds().find(cimClass->GetName({}));
      if (deed == deeds().end()) throw TVELException(kErrorClassNotServed, "not served");
      deed->second(ns);
    }
  }
};

const TestPlugin* const kRegistered = new TestPlugin;

}  // namespace
