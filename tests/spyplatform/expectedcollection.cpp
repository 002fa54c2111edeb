// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/expectedcollection.h"

namespace spyplatform {

void publishAll(ExpectedCalls& expected, const Collected& collected) {
  expected.publish("KRXSG_DiagnosticVPD", collected.diagnostics);
  expected.publish("KRXSG_PostBIOSVPD");
  expected.publish("KRXSG_SystemBIOSElement", collected.systemBios);
  expected.publish("KRXSG_HardwareRevisionLevel", collected.hardware);
  expected.publish("KRXSG_Vpd", collected.vpd);
  expected.publish("KRXSG_SPROMFirmwareVPDMain", collected.main);
  expected.publish("KRXSG_SPROMFirmwareVPDBootROM", collected.bootRom);
  expected.publish("KRXSG_DeviceDriver");
  expected.publish("KRXSG_SystemBIOS");
  expected.publish("KRXSG_cKVM", collected.cKVM);
  expected.publish("KRXSG_USBTapeFirmwareElement");
}

void noFruSource(ExpectedCalls& expected) {
  expected.enumerate("KRXSG_IPMIFRU", 0);
  expected.log(3, "spfirmwarevpd: There is no KRXSG_IPMIFRU instance.");
}

namespace {

void expectKindOfMachine(ExpectedCalls& expected) {
  expected.construction();
  expected.call("GetSplibraryInstance(0)");
  expected.says("IsIPMIDriversPresent", true);
  expected.says("IsBMCMachine", false);
  noFruSource(expected);
  expected.noOemStrings();
  expected.machineType("7777");
  expected.call("GetSplibraryInstance(0)");
  expected.says("isDotcommand", true);
  expected.says("checkSPComm", true);
  expected.log(3, "Getting firmware and vpd");
}

void expectFirmware(ExpectedCalls& expected, Collected& collected) {
  expected.counts("discoverSPs", 1);
  expected.descriptorWalk(0, true);
  expected.enumerate("KRXSG_QLA_ComputerSystem", 2);
  expected.computerSystem(0, 2, "second");
  expected.computerSystem(1, 1, "The SP");
  collected.main = {
      expected.firmwareRecord("KRXSG_SPROMFirmwareVPDMain", "The SP Main VPD", "1", "MAIN.BIN")};
  collected.bootRom = {expected.firmwareRecord("KRXSG_SPROMFirmwareVPDBootROM",
                                               "The SP BootROM VPD", "1", "BOOT.BIN")};
  collected.hardware = {expected.hardwareRecord("1", "5")};
  collected.diagnostics = {expected.diagnosticsRecord("1")};
}

// The first DIMM answers, the second with nothing; the second power supply fails.
void expectDimmsAndPowerSupplies(ExpectedCalls& expected, Collected& collected) {
  expected.says("IsBMCMachine", false);
  expected.log(3, "get DIMM info only from QLA");
  expected.countComponents("04 03 05 0B 01", 2);
  expected.exchange("04 03 05 0B 01", "00 00 7F 00", 0, 0, 99,
                    [&] { collected.vpd.push_back(expected.dimm("", 1)); });
  expected.exchange("04 03 05 0B 02", "00 00 7F 00", 99, 0, 0,
                    [&] { expected.log(3, "DIMM  2 VPD not populated."); });
  expected.countComponents("04 03 05 0C 01", 2);
  expected.exchange("04 03 05 0C 01", "00 00 80 00", 0, 0, 55, [&] {
    collected.vpd.push_back(expected.component({"Power Supply 1", ""}, "FRU-OF-PS001"));
  });
  expected.exchange("04 03 05 0C 02", "00 00 80 00", 55, 0, -1,
                    [&] { expected.componentMissing("Power Supply  2 VPD not available "); });
}

// The power backplane answers with its other data set.
void expectBackplanesAndBoards(ExpectedCalls& expected, Collected& collected) {
  expected.says("IsBMCMachine", false);
  expected.log(3, "get power backplane info only from QLA");
  expected.exchange("04 03 05 0D 01", "00 00 81 00", 55, 0, -1, [&] {
    expected.componentMissing("power backplane VPD not available...trying alternate data set");
  });
  expected.exchange("04 03 05 0D 01", "00 00 80 00", 55, 0, 55, [&] {
    collected.vpd.push_back(expected.component({"Power BackPlane", ""}, " "));
  });
  expected.exchange("04 03 05 03 01", "00 00 A0 00", 55, 0, 55, [&] {
    collected.vpd.push_back(expected.component({"Processor Card", ""}, "FRU-OF-CARD1"));
  });
  expected.countComponents("04 03 05 0E 01", 1);
  expected.exchange("04 03 05 0E 01", "00 00 70 00", 55, 0, 55, [&] {
    collected.vpd.push_back(expected.component({"DASD BackPlane", ""}, "FRU-OF-DASD1"));
  });
  expected.exchange("04 03 05 02 01", "10 00 10 00", 55, 0, 18, [&] {
    collected.vpd.push_back(expected.planar({"Planar", ""}));
  });
}

}  // namespace

Collected collectFromOneDotCommandSP(ExpectedCalls& expected) {
  Collected collected;
  expectKindOfMachine(expected);
  expectFirmware(expected, collected);
  expected.buildCommandLists();
  expected.counts("discoverSPs", 1);

  expectDimmsAndPowerSupplies(expected, collected);
  expectBackplanesAndBoards(expected, collected);
  collected.systemBios = expected.systemBios("7777", 1, false, true);
  return collected;
}

}  // namespace spyplatform
