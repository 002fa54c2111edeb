// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/machines.h"

#include "tests/spyplatform/script.h"

namespace spyplatform {

using NKRXVEL20::TCIMValue;

void describeMachineWithoutSP() {
  state().machineType = "7777";
  state().structures = {
      oemStrings({"KRX Diagnostics DIA789", " ", "KRX Torviks Management Processor 12-B"}),
      biosInformation()};
}

void describeMachineWithOneDotCommandSP() {
  state().machineType = "7777";
  state().structures = {biosInformation()};
  state().published["KRXSG_QLA_ComputerSystem"] = {
      {{"SourceNode", TCIMValue(std::uint8_t{2})}, {"Description", TCIMValue("second")}},
      {{"SourceNode", TCIMValue(std::uint8_t{1})}, {"Description", TCIMValue("The SP")}}};
  when("IsIPMIDriversPresent", returns(1));
  when("isDotcommand", returns(1));
  when("checkSPComm", returns(1));
  when("discoverSPs", returns(1));
  when("GetNumberBMCNode", returns(1));
  when("buildDotCommandList", returns(1));
  when("getComponentdotCmdList", {"04 03 05 0B 01"}, returns(2));
  when("getComponentdotCmdList", {"04 03 05 0C 01"}, returns(2));
  when("getComponentdotCmdList", {"04 03 05 0E 01"}, returns(1));
  whenSent("04 03 05 06 01", 0, replies(firmwareRecord("MAIN.BIN")));
  whenSent("04 03 05 06 02", 0, replies(firmwareRecord("BOOT.BIN")));
  whenSent("04 03 05 07", 0, replies({5}));
  whenSent("04 03 05 01 01", 0, replies(nodeRecord()));
  whenSent("04 03 05 01", 0, replies(nodeRecord()));
  whenSent("04 03 05 0B 01 / 00 00 7F 00", 0, replies(dimmRecord(), 99));
  whenSent("04 03 05 0B 02 / 00 00 7F 00", 0, replies({}, 0));
  whenSent("04 03 05 0C 01 / 00 00 80 00", 0, replies(componentRecord("FRU-OF-PS001"), 55));
  whenSent("04 03 05 0D 01 / 00 00 80 00", 0, replies(componentRecord(""), 55));
  whenSent("04 03 05 03 01 / 00 00 A0 00", 0, replies(componentRecord("FRU-OF-CARD1"), 55));
  whenSent("04 03 05 0E 01 / 00 00 70 00", 0, replies(componentRecord("FRU-OF-DASD1"), 55));
  whenSent("04 03 05 02 01 / 10 00 10 00", 0, replies(planarRecord(), 18));
}

void describeMachineWithTwoNodes() {
  state().machineType = "5010";
  state().structures = {biosInformation()};
  when("IsBMCMachine", returns(1));
  when("IsIntegratedBMC", returns(1));
  when("isDotcommand", returns(1));
  when("checkSPComm", returns(1));
  when("discoverSPs", returns(2));
  when("GetNumberBMCNode", returns(2));
  when("buildDotCommandList", returns(1));
  when("getComponentdotCmdList", {"04 03 05 0B"}, returns(1));
  when("getComponentdotCmdList", {"04 03 05 0C"}, returns(0));
  for (const int spIndex : {0, 1}) {
    whenSent("04 03 05 06 01", spIndex, replies(firmwareRecord("MAIN.BIN")));
    whenSent("04 03 05 06 02", spIndex, replies(firmwareRecord("BOOT.BIN")));
    whenSent("04 03 05 07", spIndex, replies({5}));
    whenSent("04 03 05 01 01", spIndex, replies(spIndex == 0 ? zeros(69) : nodeRecord()));
    whenSent("04 03 05 01", spIndex, replies(nodeRecord()));
    whenSent("04 03 05 02 01 / 10 00 10 00", spIndex, replies(planarRecord(), 18));
  }
  whenSent("04 03 05 0B 01 / 00 00 7F 00", 0, replies(dimmRecord(), 99));
  whenSent("04 03 05 0B 02 / 00 00 7F 00", 1, replies(dimmRecord(), 99));
}

void describeMachineWithTamberSP() {
  state().machineType = "4210";
  state().structures = {oemStrings({"KRX Torviks Management Processor 12-B"}), biosInformation()};
  when("IsBMCMachine", returns(1));
  when("IsIPMIDriversPresent", returns(1));
  when("isTamber", returns(1));
  when("isTwgStop", returns(1));
  when("isTvmlibrary", returns(1));
  when("sendTamberCommand", replies(text("???1.47b", 8), 5));
}

void describeMachineWithcKVM() {
  state().machineType = "3105";
  state().structures = {biosInformation()};
  state().published["KRXSG_IPMIFRU"] = {{}, {}};
  for (const char* description : {"A keyboard", "Maker's cKVM unit", "never read"}) {
    state().published["KRXSG_USBDevice"].push_back({{"Description", TCIMValue(description)}});
  }
  when("sendIPMICommand", replies(joined({{1, 0x20, 0x07, 0, 0, 9, 0, 0, 0}, text("1.2 (b)", 9)})));
}

const std::vector<std::string>& allClasses() {
  static const std::vector<std::string> kClasses = {"KRXSG_DiagnosticVPD",
                                                    "KRXSG_PostBIOSVPD",
                                                    "KRXSG_SystemBIOSElement",
                                                    "KRXSG_HardwareRevisionLevel",
                                                    "KRXSG_Vpd",
                                                    "KRXSG_SPROMFirmwareVPDMain",
                                                    "KRXSG_SPROMFirmwareVPDBootROM",
                                                    "KRXSG_DeviceDriver",
                                                    "KRXSG_SystemBIOS",
                                                    "KRXSG_cKVM",
                                                    "KRXSG_USBTapeFirmwareElement"};
  return kClasses;
}

}  // namespace spyplatform
