// SPDX-License-Identifier: Apache-2.0
#include "host/recording/record.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>

#include "host/machine/machinewriter.h"
#include "host/machine/smbiosparts.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SPKind;

Machine bareMachine() {
  Machine machine;
  machine.source = "file";
  machine.name = "bare";
  machine.sp = NKRXVEL20::host::makeSimulatedSP({});
  return machine;
}

Recording recordOf(Machine machine, bool redact = false) {
  return record(std::move(machine), {{{TEST_PLUGIN}, {}}, redact});
}

std::string expectedText(const std::string& members) {
  return nlohmann::ordered_json::parse(R"({"format":"vel-machine/1","name":"bare")" + members + "}")
             .dump(2) +
         "\n";
}

// The test plug-in sends one command of each kind and then ends the request with an exception.
constexpr char kFailedIpmi[] =
    R"("ipmi_commands":[{"request":"01 20 06 00 52 01 00 00 00 7F","fail":true}])";

TEST(Record, HoldsTheFactsTheCommandsAndWhatTheMachineGave) {
  SimulatedSP sp;
  sp.kind = SPKind::kDotCommand;
  sp.count = 2;
  sp.bmcNodes = 1;
  sp.bmc = sp.ipmiDrivers = sp.integratedBmc = sp.twgStop = sp.tvmLibrary = true;
  sp.commandList = false;
  sp.components = {{{4, 3, 5, 0x0B}, 4}};  // nobody asks for them
  sp.dotCommands = {{1, {4, 3, 5, 6, 1}, {}, {{false, {1, 2, 3}, {}}}}};
  sp.tamberCommands = {{{0x01, 0xF1, 0xF1, 0x0F}, {}, {{false, {0, 0, 0, 'Y'}, {}}}}};
  Machine machine = bareMachine();
  machine.description = "free text";
  machine.machineType = "5010";
  machine.sp = NKRXVEL20::host::makeSimulatedSP(sp);
  machine.smbios.emplace().structures = {{wholeStructure({0, 9, {1}, {"KRX"}}), 3}};
  machine.smbios->endStatus = 7;
  machine.companions = {{"KRXSG_USBDevice", {{"Description", TCIMValue("KRX cKVM")}}}};
  machine.missingClasses = {"KRXSG_IPMIFRU"};
  machine.faults = {{NKRXVEL20::host::CimOperation::kGetClass, "KRXSG_cKVM", "", 1, false}};

  const Recording recording = recordOf(std::move(machine));
  ASSERT_TRUE(recording.error);
  EXPECT_EQ("(anonymous namespace)::OwnError", recording.error->exception);
  EXPECT_EQ(
      expectedText(
          R"(,"description":"free text","machine_type":"5010",)"
          R"("smbios":{"structures":[{"type":0,"handle":9,"data":"01","strings":["KRX"],"status":3}],)"
          R"("end_status":7},)"
          R"("sp":{"kind":"dot-command","count":2,"bmc_nodes":1,"bmc":true,"ipmi_drivers":true,)"
          R"("integrated_bmc":true,"twg_stop":true,"tvm_library":true,"command_list":false,)"
          R"("dot_commands":[{"sp":1,"command":"04 03 05 06 01","reply":"01 02 03"}],)"
          R"("tamber_commands":[{"command":"01 F1 F1 0F","reply":"00 00 00 59"}],)" +
          std::string(kFailedIpmi) +
          R"(},"instances":{"KRXSG_USBDevice":[{"Description":"KRX cKVM"}]},)"
          R"("missing_classes":["KRXSG_IPMIFRU"],)"
          R"("faults":[{"operation":"get_class","class":"KRXSG_cKVM","nth":1}])"),
      machineFileText(recording.machine));
}

TEST(Record, OfASilentSPHoldsItsSilence) {
  SimulatedSP sp;
  sp.kind = SPKind::kTamber;
  sp.count = 1;
  sp.answers = false;
  Machine machine = bareMachine();
  machine.sp = NKRXVEL20::host::makeSimulatedSP(sp);
  EXPECT_EQ(expectedText(R"(,"sp":{"kind":"tamber","count":1,"answers":false,)"
                         R"("dot_commands":[{"sp":1,"command":"04 03 05 06 01","fail":true}],)"
                         R"("tamber_commands":[{"command":"01 F1 F1 0F","fail":true}],)" +
                         std::string(kFailedIpmi) + "}"),
            machineFileText(recordOf(std::move(machine)).machine));
}

TEST(Record, WithoutAnSPDriverHasNoSP) {
  Machine machine = bareMachine();
  machine.machineType = "INITFAIL";  // the test plug-in takes a driver for granted
  machine.sp = nullptr;
  const Recording recording = recordOf(std::move(machine));
  ASSERT_TRUE(recording.error);
  EXPECT_EQ(40, recording.error->code);
  EXPECT_EQ(expectedText(R"(,"machine_type":"INITFAIL")"), machineFileText(recording.machine));
}

TEST(Record, TheDescriptionSaysWhereItIsFromAndWhatIsLeftOut) {
  const std::string credential = "io.systemd.credential:login=secret";
  const struct {
    const char* what;
    const char* source;
    const char* description;
    std::vector<std::string> strings;
    const char* recorded;
  } cases[] = {
      {"live", "live", "", {"x"}, "recorded from bare"},
      {"a file's own", "file", "free text", {"x"}, "free text"},
      {"a file without", "file", "", {"x"}, ""},
      {"live, one credential",
       "live",
       "",
       {credential},
       "recorded from bare; 1 credential string left out"},
      {"live, two credentials",
       "live",
       "",
       {"x", credential, credential},
       "recorded from bare; 2 credential strings left out"},
      {"a file's own, one credential",
       "file",
       "free text",
       {credential},
       "free text; 1 credential string left out"},
      {"a file without, one credential", "file", "", {credential}, "1 credential string left out"},
  };
  for (const auto& c : cases) {
    Machine machine = bareMachine();
    machine.source = c.source;
    machine.description = c.description;
    machine.smbios.emplace().structures = {{wholeStructure({11, 0, {1}, c.strings}), 0}};
    const MachineFile recorded = recordOf(std::move(machine)).machine;
    EXPECT_EQ(c.recorded, recorded.description) << c.what;
    EXPECT_EQ(std::string::npos, machineFileText(recorded).find("secret")) << c.what;
  }
}

TEST(Record, TheNameIsUtf8) {
  Machine machine = bareMachine();
  machine.name = "host\xFF";
  machine.source = "live";
  const MachineFile recorded = recordOf(std::move(machine)).machine;
  EXPECT_EQ("host\xEF\xBF\xBD", recorded.name);
  EXPECT_EQ("recorded from host\xEF\xBF\xBD", recorded.description);
}

TEST(Record, RedactsWhenAsked) {
  for (const bool redacted : {false, true}) {
    Machine machine = bareMachine();
    machine.companions = {{"KRXSG_TapeDrive", {{"DeviceID", TCIMValue(R"(A\B\KX71)")}}}};
    EXPECT_EQ(redacted ? R"(A\B\GG01)" : R"(A\B\KX71)", recordOf(std::move(machine), redacted)
                                                            .machine.instances.at(0)
                                                            .properties.at(0)
                                                            .second.ToString());
  }
}

// What other collectors publish goes into the file where asking them again would need the devices.
TEST(Record, OtherCollectorsAreListedAndTheirDevicesHeld) {
  const CollectorFiles collectors{
      {TEST_PLUGIN}, {TEST_PROVIDERS "/libdeviceinventory.pi.so"}, std::nullopt};
  const Recording recording = record(bareMachine(), {collectors, false});
  EXPECT_EQ(std::vector<std::string>{"DeviceInventory"}, recording.machine.collectors);
  EXPECT_EQ((std::vector<std::string>{"KRXSG_USBDevice", "KRXSG_TapeDrive"}),
            recording.machine.givenClasses);
  ASSERT_EQ(2U, recording.machine.instances.size());
  EXPECT_EQ("KRXSG_USBDevice", recording.machine.instances[0].className);
  EXPECT_EQ("KRXSG_TapeDrive", recording.machine.instances[1].className);
}

TEST(Record, WhatAMachineGivesOfAnotherCollectorIsHeldOnce) {
  Machine machine = bareMachine();
  machine.collectors = {"DeviceInventory"};
  machine.givenClasses = {"KRXSG_USBDevice"};
  machine.companions = {{"KRXSG_USBDevice", {{"Description", TCIMValue("KRX cKVM")}}}};
  const Recording recording = recordOf(std::move(machine));
  EXPECT_EQ(std::vector<std::string>{"KRXSG_USBDevice"}, recording.machine.givenClasses);
  EXPECT_EQ(1U, recording.machine.instances.size());
}

// Nobody knows what would have to be asked for such a class again.
TEST(Record, AClassThatDoesNotTellWhereItsValuesAreFromIsHeldAsPublished) {
  const auto before = NKRXVEL20::host::currentSchema();
  const std::array files{NKRXVEL20::host::SchemaFile{"others.mof", R"(
    Qualifier Provider : string = null, Scope(class);
    [Provider("DeviceInventory")] class KRXSG_USBDevice { string Description; };)"}};
  NKRXVEL20::host::setSchema(NKRXVEL20::host::parseSchema(files));
  const CollectorFiles collectors{
      {TEST_PLUGIN}, {TEST_PROVIDERS "/libdeviceinventory.pi.so"}, std::nullopt};
  const Recording recording = record(bareMachine(), {collectors, false});
  NKRXVEL20::host::setSchema(before);
  EXPECT_EQ(std::vector<std::string>{"KRXSG_USBDevice"}, recording.machine.givenClasses);
  EXPECT_EQ(1U, recording.machine.instances.size());
}

}  // namespace
}  // namespace velhost
