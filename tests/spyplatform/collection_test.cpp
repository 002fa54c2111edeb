// SPDX-License-Identifier: Apache-2.0
//
// Every call of a whole collection, from the construction of the plug-in's object to the last
// instance published, on five kinds of machine. The expected calls are written by hand from what
// each collector is to do; another maker's platform has to see the very same ones.
#include <algorithm>

#include "tests/spyplatform/expectedcollection.h"
#include "tests/spyplatform/machines.h"
#include "tests/spyplatform/spyfixture.h"

namespace spyplatform {
namespace {

const OemString kDiagnosticsString = {"KRX Diagnostics DIA789", "KRXDiagnosticsDIA789"};
const OemString kTorviksString = {"KRX Torviks Management Processor 12-B",
                                  "KRXTorviksManagementProcessor12B"};

using CollectionTest = SpyTest;

TEST_F(CollectionTest, MachineWithoutSP) {
  describeMachineWithoutSP();
  load();
  query(allClasses());

  ExpectedCalls expected;
  Collected collected;
  expected.construction();
  expected.call("GetSplibraryInstance(0)");
  expected.says("IsIPMIDriversPresent", false);
  noFruSource(expected);
  expected.oemStrings({kDiagnosticsString, {" ", ""}, kTorviksString});
  expected.machineType("7777");
  expected.call("GetSplibraryInstance(0)");
  expected.says("isDotcommand", false);
  expected.says("isTamber", false);
  collected.diagnostics = {expected.diagnosticsOfOemString(
      "KRXDiagnosticsDIA789", "KRX", /*shownVersion=*/" ", "DiagnosticsDIA789")};
  collected.main = {
      expected.firmwareOfOemString("3", {"KRX Torvik Management Processor", kTorviksString.copy})};
  collected.systemBios = expected.systemBios("7777", 0, false, false);
  expected.log(3, "No SP's installed on the system");
  publishAll(expected, collected);
  EXPECT_EQ(difference(takeTrace(), expected.lines()), "");
}

TEST_F(CollectionTest, SecondQueryPublishesOnlyAndUnloadingReleasesEverything) {
  state().structures = {oemStrings({kDiagnosticsString.text}), biosInformation()};
  load();
  query({});
  takeTrace();
  query({"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(takeTrace(), (Trace{"KRXSG_DiagnosticVPD.GetName({})", "instance#1.AddToClass({})"}));
  plugin.release()->PrepareForUnload();
  Trace released = takeTrace();
  ASSERT_FALSE(released.empty());
  EXPECT_EQ(released.back(), "~plug-in");
  std::ranges::sort(released);
  EXPECT_EQ(released, (Trace{"~instance#1", "~instance#2", "~plug-in"}));
}

TEST_F(CollectionTest, MachineWithOneDotCommandSP) {
  describeMachineWithOneDotCommandSP();
  load();
  query(allClasses());

  ExpectedCalls expected;
  const Collected collected = collectFromOneDotCommandSP(expected);
  publishAll(expected, collected);
  EXPECT_EQ(difference(takeTrace(), expected.lines()), "");
}

// What both nodes' SPs answer, but for the first one's diagnostics record, which is empty: the
// diagnostics are then asked for once more, node by node.
void expectNodeDiagnostics(ExpectedCalls& expected, Collected& collected) {
  expected.says("isDotcommand", true);
  expected.says("checkSPComm", true);
  expected.counts("discoverSPs", 2);
  std::string request = expected.makeDotCommand("04 03 05 01 01");
  expected.sendDotCommand(request, 0, 0, 69);
  expected.destroy(request);
  request = expected.makeDotCommand("04 03 05 01 01");
  expected.sendDotCommand(request, 0, 1, 69);
  expected.destroy(request);
  collected.diagnostics.push_back(expected.diagnosticsOfNode(2));
}

// One DIMM, a planar and nothing else; the DIMMs' numbers run on from node to node.
void expectNodeComponents(ExpectedCalls& expected, Collected& collected, int spIndex,
                          int lengthBefore) {
  const std::string label = "Node " + std::to_string(spIndex + 1);
  const std::string dimmPath = "04 03 05 0B 0" + std::to_string(spIndex + 1);
  expected.says("IsBMCMachine", true);
  expected.says("IsIPMIDriversPresent", false);
  expected.log(3, "get DIMM info only from QLA");
  expected.countComponents(dimmPath, 1);
  expected.exchange(dimmPath, "00 00 7F 00", lengthBefore, spIndex, 99,
                    [&] { collected.vpd.push_back(expected.dimm(label, spIndex + 1)); });
  expected.countComponents("04 03 05 0C 01", 0);
  expected.says("IsBMCMachine", true);
  expected.says("IsIPMIDriversPresent", false);
  expected.log(3, "get power backplane info only from QLA");
  const auto missing = [&](const std::string& path, const std::string& data, const char* entry) {
    expected.exchange(path, data, 99, spIndex, -1, [&] { expected.componentMissing(entry); });
  };
  missing("04 03 05 0D 01", "00 00 81 00",
          "power backplane VPD not available...trying alternate data set");
  missing("04 03 05 0D 01", "00 00 80 00", "Power backplane VPD not available");
  missing("04 03 05 03 01", "00 00 A0 00", "Processor Card VPD not available");
  expected.countComponents("04 03 05 0E 01", -1);
  expected.exchange("04 03 05 02 01", "10 00 10 00", 99, spIndex, 18, [&] {
    collected.vpd.push_back(expected.planar({label + ": Planar", label}));
  });
}

TEST_F(CollectionTest, MachineWithTwoNodes) {
  describeMachineWithTwoNodes();
  load();
  query(allClasses());

  ExpectedCalls expected;
  Collected collected;
  expected.construction();
  expected.call("GetSplibraryInstance(0)");
  expected.says("IsIPMIDriversPresent", false);
  noFruSource(expected);
  expected.noOemStrings();
  expected.machineType("5010");
  expected.call("GetSplibraryInstance(0)");
  expected.says("isDotcommand", true);
  expected.says("checkSPComm", true);
  expected.log(3, "Getting firmware and vpd");

  expected.counts("discoverSPs", 2);
  expected.descriptorWalk(0, false);
  expected.descriptorWalk(1, true);
  expected.enumerate("KRXSG_QLA_ComputerSystem", 0);
  for (const char* node : {"1", "2"}) {
    collected.main.push_back(expected.firmwareRecord(
        "KRXSG_SPROMFirmwareVPDMain", "KRX Quellon Link Adapter Main VPD", node, "MAIN.BIN"));
    collected.bootRom.push_back(expected.firmwareRecord(
        "KRXSG_SPROMFirmwareVPDBootROM", "KRX Quellon Link Adapter BootROM VPD", node, "BOOT.BIN"));
    collected.hardware.push_back(expected.hardwareRecord(node, "5"));
    if (*node == '1') {
      expectNodeDiagnostics(expected, collected);
    } else {
      collected.diagnostics.push_back(expected.diagnosticsRecord(node));
    }
  }

  expected.buildCommandLists();
  expected.counts("discoverSPs", 2);
  expectNodeComponents(expected, collected, 0, 0);
  expectNodeComponents(expected, collected, 1, 18);
  collected.systemBios = expected.systemBios("5010", 2, true, true);
  publishAll(expected, collected);
  EXPECT_EQ(difference(takeTrace(), expected.lines()), "");
}

TEST_F(CollectionTest, MachineWithTamberSP) {
  describeMachineWithTamberSP();
  load();
  query(allClasses());

  ExpectedCalls expected;
  Collected collected;
  expected.construction();
  expected.call("GetSplibraryInstance(0)");
  expected.says("IsIPMIDriversPresent", true);
  expected.says("IsBMCMachine", true);
  expected.oemStrings({kTorviksString});
  expected.machineType("4210");
  expected.call("GetSplibraryInstance(0)");
  expected.says("isDotcommand", false);
  expected.says("isTamber", true);
  expected.log(3, "Getting AMP firmware and vpd");
  expected.says("isTwgStop", true);
  expected.call("TamberCmd#1(01 F1 F1 0F, null, 0, false, true)");
  expected.call("sendTamberCommand(TamberCmd#1, length 0, 255 zero bytes) -> true, length 5");
  collected.main = {expected.create("KRXSG_SPROMFirmwareVPDMain")};
  expected.set(collected.main.front(),
               {{"Name", quoted("KRX Ambrel Management Processor")},
                {"SoftwareElementID", quoted("KRX Ambrel Management Processor")},
                {"SoftwareElementState", u16(3)},
                {"TargetOperatingSystem", u16(66)},
                {"BuildNumber", quoted("1.47b")},
                {"Version", quoted("1.47b")}});
  collected.systemBios = expected.systemBios("4210", 0, false, false);
  publishAll(expected, collected);
  EXPECT_EQ(difference(takeTrace(), expected.lines()), "");
}

TEST_F(CollectionTest, MachineWithcKVM) {
  describeMachineWithcKVM();
  load();
  query(allClasses());

  ExpectedCalls expected;
  Collected collected;
  expected.construction();
  expected.call("GetSplibraryInstance(0)");
  expected.says("IsIPMIDriversPresent", false);
  expected.enumerate("KRXSG_IPMIFRU", 2);
  expected.log(3, "spfirmwarevpd: There are 2 KRXSG_IPMIFRU instances.");
  expected.noOemStrings();
  expected.machineType("3105");
  expected.call("GetSplibraryInstance(0)");
  expected.says("isDotcommand", false);
  expected.says("isTamber", false);
  collected.systemBios = expected.systemBios("3105", 0, false, false);
  expected.log(3, "No SP's installed on the system");

  expected.enumerate("KRXSG_USBDevice", 3);
  expected.call("KRXSG_USBDevice[0].GetProperty(\"Description\", {})");
  expected.call("KRXSG_USBDevice[0].Description.GetValueAsString() -> \"A keyboard\"");
  expected.call("KRXSG_USBDevice[1].GetProperty(\"Description\", {})");
  expected.call("KRXSG_USBDevice[1].Description.GetValueAsString() -> \"Maker's cKVM unit\"");
  expected.log(3, "spfirmwarevpd: There is cKVM.");
  expected.log(3,
               "cKVM - 0x01, 0x20, 0x06, 0x00, 0x52, 0x06, 0x00, 0x00, 0x00, 0xF5, 0x68, 0x10, "
               "0x1D, 0x01, 0x00");
  expected.call("GetSplibraryInstance(0)");
  expected.call(
      "sendIPMICommand(256 bytes 01 20 06 00 52 06 00 00 00 F5 68 10 1D 01, then zeros, length "
      "256, 256, true) -> true, length 18");
  expected.log(3, "cKVM - IPMI command was sent successfully.");
  collected.cKVM = {expected.create("KRXSG_cKVM")};
  expected.set(collected.cKVM.front(), {{"SoftwareElementID", quoted("cKVM")},
                                        {"SoftwareElementState", u16(3)},
                                        {"TargetOperatingSystem", u16(66)},
                                        {"Version", quoted("1.2(b)")},
                                        {"FirmwareVersion", quoted("1.2(b)")}});
  publishAll(expected, collected);
  EXPECT_EQ(difference(takeTrace(), expected.lines()), "");
}

}  // namespace
}  // namespace spyplatform
