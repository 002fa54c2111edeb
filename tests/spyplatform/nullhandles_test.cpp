// SPDX-License-Identifier: Apache-2.0
//
// A framework that hands out null handles: a null class fails where an instance is created of it, a
// null instance where its first property is set. Each collector reports it as any refusal.
#include <algorithm>

#include "tests/spyplatform/spyfixture.h"

namespace spyplatform {
namespace {

using NKRXVEL20::SPLibrary;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::TVELException;

using NamespaceHandle = SPFirmwareVpd::NamespaceHandle;

constexpr int kAnyStatus = -1;  // nobody looks at it

// Runs one collector on an SP and in a namespace.
using Run = int (*)(SPFirmwareVpd&, SPLibrary*, NamespaceHandle);

int runSPFirmwareVpd(SPFirmwareVpd& plugin, const char* className, const char* property,
                     SPLibrary* spLibrary, const NamespaceHandle& ns) {
  plugin.parsedVpdRecords = {{{className, {{property, "1"}}}}};
  return plugin.getSPFirmwareVpd(spLibrary, ns).status;
}

int runMain(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return runSPFirmwareVpd(plugin, "KRXSG_SPROMFirmwareVPDMain", "Version", spLibrary, ns);
}

int runBootRom(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return runSPFirmwareVpd(plugin, "KRXSG_SPROMFirmwareVPDBootROM", "Version", spLibrary, ns);
}

int runHardware(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return runSPFirmwareVpd(plugin, "KRXSG_HardwareRevisionLevel", "Hardwarelevel", spLibrary, ns);
}

int runDiagnosticsRecord(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return runSPFirmwareVpd(plugin, "KRXSG_DiagnosticVPD", "BuildNumber", spLibrary, ns);
}

int runSPFirmware(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  return plugin.createSPFirmwareInstance(ns, "An SP", "AnSP", "1").status;
}

int runSystemBios(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return plugin.getBIOSstructure(spLibrary, ns).status;
}

int runOemDiagnostics(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  return plugin.createDiagInstance(ns, "DIA789").status;
}

int runNodeDiagnostics(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return plugin.createDiagInstanceBasedOnDotCommand(ns, spLibrary).status;
}

int runComponent(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  Bytes record(2048);
  std::string name = "Power Supply 1";
  return plugin.printVpdData(name.data(), "", record.data(), ns).status;
}

int runDimm(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  Bytes record(2048);
  std::string name = "DIMM";
  return plugin.printMemoryVpdData(name.data(), "", record.data(), 1, ns).status;
}

int runPlanar(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  Bytes record(2048);
  std::string name = "Planar";
  return plugin.printPlanarVpd(name.data(), "", record.data(), ns).status;
}

int runTamber(SPFirmwareVpd& plugin, SPLibrary* spLibrary, NamespaceHandle ns) {
  return plugin.gettamberFirmware(spLibrary, ns).status;
}

int runcKVM(SPFirmwareVpd& plugin, SPLibrary* /*spLibrary*/, NamespaceHandle ns) {
  plugin.CreatecKVMInstance(ns);
  return kAnyStatus;
}

const struct {
  const char* what;
  Run run;
  const char* className;
  const char* nullClass;     // what is logged
  const char* nullInstance;  // the same
  int status;
} kCollectors[] = {
    {"SP main firmware record", runMain, "KRXSG_SPROMFirmwareVPDMain",
     "Error adding Class KRXSG_SPROMFirmwareVPDMain", "Error adding SP Name property", 0},
    {"boot-ROM firmware record", runBootRom, "KRXSG_SPROMFirmwareVPDBootROM",
     "Error adding Class KRXSG_SPROMFirmwareVPDBootROM", "Error adding SP Name property", 0},
    {"hardware revision record", runHardware, "KRXSG_HardwareRevisionLevel",
     "Error adding Class KRXSG_HardwareRevisionLevel", "Error adding Property Hardwarelevel", 0},
    {"diagnostics record", runDiagnosticsRecord, "KRXSG_DiagnosticVPD",
     "Error adding Class KRXSG_DiagnosticVPD", "Error adding Property BuildNumber", 0},
    {"SP firmware of SMBIOS", runSPFirmware, "KRXSG_SPROMFirmwareVPDMain",
     "KRXSG_SPROMFirmwareVPDMain: Error allocating instance KRXSG_SPROMFirmwareVPDMain",
     "KRXSG_SPROMFirmwareVPDMain: Error adding Version", 3},
    {"system BIOS", runSystemBios, "KRXSG_SystemBIOSElement",
     "Error adding KRXSG_SystemBIOSElement class", "Error adding Name", 3},
    {"diagnostics of an OEM string", runOemDiagnostics, "KRXSG_DiagnosticVPD",
     "Error allocating instance KRXSG_DiagnosticVPD",
     "KRXSG_DiagnosticVPD: Error adding Build Number", 3},
    {"diagnostics of a node", runNodeDiagnostics, "KRXSG_DiagnosticVPD",
     "Error adding KRXSG_SystemBIOSElement class", "KRXSG_DiagnosticVPD: Error adding Build Number",
     3},
    {"component", runComponent, "KRXSG_Vpd", "Error adding KRXSG_VPD class",
     "Error adding VPD data", 3},
    {"DIMM", runDimm, "KRXSG_Vpd", "Error adding KRXSG_VPD class", "Error adding Name", 3},
    {"planar", runPlanar, "KRXSG_Vpd", "Error adding KRXSG_VPD class",
     "Error adding IdentifyingNumber", 3},
    {"Tamber firmware", runTamber, "KRXSG_SPROMFirmwareVPDMain",
     "Error adding SP Firmware VPD data", "Error adding Name", 3},
    {"cKVM", runcKVM, "KRXSG_cKVM", "cKVM - Cannot create KRXSG_cKVM instance.",
     "cKVM - Cannot set property value for KRXSG_cKVM instance.", kAnyStatus},
};

class NullHandlesTest : public SpyTest {
 protected:
  // A machine on which every collector comes to its instance.
  void describeMachine() {
    reset();
    state().structures = {biosInformation()};
    when("isDotcommand", returns(1));
    when("checkSPComm", returns(1));
    when("discoverSPs", returns(2));
    when("sendDotCommand", replies(nodeRecord()));
    when("sendTamberCommand", replies(text("???1.47b", 8), 5));
    load();
  }

  // What shows how far the collector came with the class.
  static Trace stepsWith(const std::string& className) {
    const Trace calls = takeTrace();
    Trace steps;
    std::ranges::copy_if(calls, std::back_inserter(steps), [&](const std::string& line) {
      return line.find(className) != std::string::npos
                 ? !line.starts_with("Log(3")
                 : line.starts_with("assertion") || line.starts_with("Log(0") ||
                       line.starts_with("instance#");
    });
    return steps;
  }

  // No list has got a null.
  bool hasNoInstances() {
    for (std::size_t k = 0; k < plugin->classNames.size(); ++k) {
      const auto* const list = plugin->instancesOf(k);
      if (list != nullptr && !list->empty()) return false;
    }
    return true;
  }
};

std::string getClassOf(const std::string& className) {
  return "namespace.GetClass(" + quoted(className) + ", {asker: \"plug-ins\"})";
}

TEST_F(NullHandlesTest, NullClassFailsWhereTheInstanceIsCreated) {
  for (const auto& c : kCollectors) {
    describeMachine();
    when("GetClass", {c.className}, null());
    const int status = c.run(*plugin, sp(), ns);
    EXPECT_EQ(stepsWith(c.className),
              (Trace{getClassOf(c.className) + " -> null", "assertion_failed px != 0",
                     "Log(0, " + quoted(c.nullClass) + ")"}))
        << c.what;
    EXPECT_EQ(status, c.status) << c.what;
    EXPECT_TRUE(hasNoInstances()) << c.what;
  }
}

TEST_F(NullHandlesTest, NullInstanceFailsWhereItsFirstPropertyIsSet) {
  for (const auto& c : kCollectors) {
    describeMachine();
    when("CreateInstance", null());
    const int status = c.run(*plugin, sp(), ns);
    EXPECT_EQ(
        stepsWith(c.className),
        (Trace{getClassOf(c.className), std::string(c.className) + ".CreateInstance() -> null",
               "assertion_failed px != 0", "Log(0, " + quoted(c.nullInstance) + ")"}))
        << c.what;
    EXPECT_EQ(status, c.status) << c.what;
    EXPECT_TRUE(hasNoInstances()) << c.what;
  }
}

// The tape collector catches nothing.
TEST_F(NullHandlesTest, TapeCollectorLetsThemPass) {
  for (const char* operation : {"GetClass", "CreateInstance", "GetProperty", "GetInstances"}) {
    reset();
    state().published["KRXSG_TapeDrive"] = {
        {{"DeviceID", TCIMValue("USBSTOR\\S&VEN_A&PROD_B&REV_1\\2")}}};
    load();
    when(operation, null());
    EXPECT_THROW(plugin->getUsbTapeFirmware(ns), TVELException) << operation;
    const Trace calls = takeTrace();
    EXPECT_EQ(linesWith(calls, "Log("), Trace{}) << operation;
    EXPECT_EQ(calls.back(), "assertion_failed px != 0") << operation;
  }
}

// The probes report a null class as one that is not there.
TEST_F(NullHandlesTest, ProbesReportANullClass) {
  reset();
  load();
  when("GetClass", null());
  plugin->DetermineIPMIFRUExist(ns);
  EXPECT_EQ(takeTrace().back(),
            "Log(3, \"spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU\")");
  plugin->DeterminecKVMExist(ns);
  EXPECT_EQ(takeTrace().back(),
            "Log(3, \"spfirmwarevpd: Can't get any instance of KRXSG_USBDevice\")");
  EXPECT_FALSE(plugin->ipmiFruExists);
  EXPECT_FALSE(plugin->cKVMExists);
}

TEST_F(NullHandlesTest, NullPluginManagerAndOneOfAnotherTypeAreAsserted) {
  for (const Outcome& manager : {null(), returns(1)}) {
    reset();
    when("GetPluginManager", manager);
    EXPECT_THROW(SPFirmwareVpd(), TVELException);
    EXPECT_EQ(linesWith(takeTrace(), "assertion"), Trace{"assertion_failed px != 0"});
    EXPECT_EQ(state().registered, nullptr);
  }
}

TEST_F(NullHandlesTest, PlugInRegistersItsPrimaryInterface) {
  load();
  EXPECT_EQ(state().registered, static_cast<NKRXVEL20::IPluginCallbacks*>(plugin.get()));
}

// The probe tests the library, the collection does not ask for it once more.
TEST_F(NullHandlesTest, MissingSPLibraryIsReportedByTheProbe) {
  load();
  takeTrace();
  when("GetSplibraryInstance", null());
  plugin->DetermineIPMIFRUExist(ns);
  EXPECT_EQ(takeTrace(), (Trace{"GetSplibraryInstance(0) -> null",
                                "fdrWriteLog(1, \"Could not load SPLibrary.\")"}));
  EXPECT_TRUE(plugin->ipmiFruProbed);
}

}  // namespace
}  // namespace spyplatform
