// SPDX-License-Identifier: Apache-2.0
//
// Several collectors in one run: who is asked for what, and when.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/collectors/queryrun.h"
#include "host/collectors/requesterror.h"
#include "tests/host/scratchfolder.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::LogEntry;
using Texts = std::vector<std::string>;

const std::filesystem::path kProviders = TEST_PROVIDERS;
const std::filesystem::path kDevices = kProviders / "libdeviceinventory.pi.so";
const std::filesystem::path kIpmi = kProviders / "libipmiinventory.pi.so";
const std::filesystem::path kFirmware = kProviders / "libspfirmwarevpd.pi.so";
const std::filesystem::path kBroken = "/nowhere/libdeviceinventory.pi.so";

Machine bareMachine() {
  Machine machine;
  machine.source = "file";
  machine.name = "bare";
  machine.machineType = "";
  machine.sp = NKRXVEL20::host::makeSimulatedSP({});
  return machine;
}

// The test plug-in, which serves most classes, and others on demand.
RunOptions with(std::vector<std::filesystem::path> onDemand) {
  return {{{TEST_PLUGIN}, std::move(onDemand)}, true, false, {}};
}

// "CLASS: the first property's value"
Texts rows(const QueryResult& result) {
  Texts lines;
  for (const auto& row : result.instances) {
    lines.push_back(row.className + ": " + row.properties.front().second.ToString());
  }
  return lines;
}

Texts logOf(const QueryResult& result) {
  Texts lines;
  for (const LogEntry& entry : result.coreLog) lines.push_back(entry.text);
  return lines;
}

TEST(Collectors, AClassGoesToItsProviderAndTheOthersToTheFirst) {
  QueryRun run(bareMachine(), with({kIpmi, kDevices}));
  const QueryResult result =
      run.request({"KRXSG_Vpd", "KRXSG_USBDevice", "KRXSG_SystemBIOSElement"}, true);
  EXPECT_FALSE(result.error);
  EXPECT_EQ((Texts{"KRXSG_Vpd: DIMM 1", "KRXSG_Vpd: DIMM 2", "KRXSG_USBDevice: DeviceInventory",
                   "KRXSG_SystemBIOSElement: 1.08"}),
            rows(result));
  EXPECT_EQ((Texts{"Init", "DeviceInventory asked for KRXSG_USBDevice"}), logOf(result));
  EXPECT_EQ("TestPlugin", run.context().plugin.name);
}

TEST(Collectors, WhatACollectorEnumeratesIsCollectedFirstOnceARequest) {
  QueryRun run(bareMachine(), with({kDevices}));
  const QueryResult aside = run.request({"KRXSG_cKVM", "KRXSG_cKVM"}, true);
  EXPECT_EQ((Texts{"KRXSG_cKVM: DeviceInventory", "KRXSG_cKVM: DeviceInventory"}), rows(aside));
  EXPECT_EQ((Texts{"Init", "DeviceInventory asked for KRXSG_USBDevice"}), logOf(aside));
}

TEST(Collectors, WhatWasCollectedFirstIsPublishedWhenItIsAskedForToo) {
  QueryRun run(bareMachine(), with({kDevices}));
  const QueryResult both = run.request({"KRXSG_cKVM", "KRXSG_USBDevice"}, true);
  EXPECT_EQ((Texts{"KRXSG_cKVM: DeviceInventory", "KRXSG_USBDevice: DeviceInventory"}), rows(both));
  EXPECT_EQ((Texts{"Init", "DeviceInventory asked for KRXSG_USBDevice"}), logOf(both));
}

TEST(Collectors, AQuestionThatLeadsBackGetsNoInstances) {
  QueryRun run(bareMachine(), with({kDevices, kIpmi}));
  const QueryResult result = run.request({"KRXSG_TapeDrive"}, true);
  EXPECT_EQ((Texts{"KRXSG_TapeDrive: DeviceInventory 1"}), rows(result));
  EXPECT_EQ(
      (Texts{"DeviceInventory asked for KRXSG_TapeDrive", "IPMIInventory asked for KRXSG_IPMIFRU",
             "KRXSG_TapeDrive leads back to DeviceInventory, which is being asked: no "
             "instances of it"}),
      logOf(result));
  EXPECT_EQ(1, result.coreLog.back().severity);
}

TEST(Collectors, NothingIsLoadedThatTheRequestDoesNotNeed) {
  QueryRun run(bareMachine(), with({kBroken}));
  EXPECT_EQ(Texts{}, run.request({"KRXSG_Vpd"}, true).failures);
}

TEST(Collectors, OneThatDoesNotLoadIsNamedAndTheOthersAnswer) {
  QueryRun run(bareMachine(), with({kBroken, kIpmi}));
  const QueryResult result = run.request({"KRXSG_cKVM", "KRXSG_Vpd", "KRXSG_IPMIFRU"}, true);
  EXPECT_FALSE(result.error);
  EXPECT_EQ((Texts{"KRXSG_Vpd: DIMM 1", "KRXSG_Vpd: DIMM 2", "KRXSG_IPMIFRU: IPMIInventory 0"}),
            rows(result));
  ASSERT_EQ(1U, result.failures.size());
  EXPECT_TRUE(result.failures[0].starts_with(kBroken.string() + ": ")) << result.failures[0];
}

// "CLASS state of COLLECTOR: reason", for each requested class.
Texts statesOf(const QueryResult& result) {
  Texts lines;
  for (const ClassState& state : result.states) {
    lines.push_back(state.className + ' ' + std::string(stateName(state.state)) + " of " +
                    state.collector + ": " + state.reason);
  }
  return lines;
}

// "COLLECTOR VERSION answered", or why not.
Texts answersOf(const QueryResult& result) {
  Texts lines;
  for (const CollectorState& state : result.collectors) {
    lines.push_back(state.name + ' ' + state.version + ' ' +
                    (state.hasAnswered ? "answered" : state.reason));
  }
  return lines;
}

TEST(Collectors, EachClassHasTheStateThatItsCollectorLeftItIn) {
  QueryRun run(bareMachine(), with({kDevices, kIpmi}));
  const QueryResult result = run.request({"KRXSG_Vpd", "KRXSG_USBDevice", "KRXSG_PostBIOSVPD",
                                          "KRXSG_SystemBIOS", "KRXSG_DeviceDriver", "KRXSG_Vpd"},
                                         true);
  EXPECT_EQ(
      (Texts{
          "KRXSG_Vpd present of TestPlugin: ", "KRXSG_USBDevice present of DeviceInventory: ",
          "KRXSG_PostBIOSVPD failed of TestPlugin: TestPlugin ended in std::runtime_error: it "
          "broke",
          "KRXSG_SystemBIOS failed of TestPlugin: TestPlugin ended in std::runtime_error: it broke",
          "KRXSG_DeviceDriver failed of TestPlugin: TestPlugin ended in std::runtime_error: it "
          "broke",
          "KRXSG_Vpd partial of TestPlugin: TestPlugin ended in std::runtime_error: it broke"}),
      statesOf(result));
  EXPECT_EQ((Texts{"TestPlugin 0.9 it ended in std::runtime_error: it broke",
                   "DeviceInventory 1.0 answered"}),
            answersOf(result));
  const QueryResult next = run.request({"KRXSG_PostBIOSVPD"}, false);
  EXPECT_EQ((Texts{"KRXSG_PostBIOSVPD unused of TestPlugin: no collector ever fills it"}),
            statesOf(next));
  EXPECT_EQ((Texts{"TestPlugin 0.9 answered"}), answersOf(next));
}

TEST(Collectors, AClassThatIsNotServedIsAFailure) {
  QueryRun run(bareMachine(), with({}));
  const QueryResult result = run.request({"KRXSG_Vpd", "KRXSG_USBDevice"}, true);
  EXPECT_EQ(
      (Texts{
          "KRXSG_Vpd present of TestPlugin: ",
          "KRXSG_USBDevice failed of DeviceInventory: TestPlugin does not serve KRXSG_USBDevice"}),
      statesOf(result));
  EXPECT_EQ((Texts{"TestPlugin 0.9 answered"}), answersOf(result));
}

TEST(Collectors, ACollectorThatDoesNotLoadIsToldOfAndFailsTheClassesThatNeedIt) {
  QueryRun run(bareMachine(), with({kBroken}));
  const QueryResult result = run.request({"KRXSG_USBDevice"}, true);
  ASSERT_EQ(2U, result.collectors.size());
  EXPECT_EQ("TestPlugin", result.collectors[0].name);
  EXPECT_EQ("libdeviceinventory.pi.so", result.collectors[1].name);
  EXPECT_FALSE(result.collectors[1].hasAnswered);
  EXPECT_TRUE(result.collectors[1].reason.starts_with(kBroken.string() + ": "))
      << result.collectors[1].reason;
  EXPECT_TRUE(statesOf(result)[0].starts_with(
      "KRXSG_USBDevice failed of DeviceInventory: " + kBroken.string() + ": "))
      << statesOf(result)[0];
}

TEST(Collectors, WhatWasGivenIsAllThereIs) {
  Machine machine = bareMachine();
  machine.collectors = {"DeviceInventory"};
  machine.givenClasses = {"KRXSG_USBDevice", "KRXSG_TapeDrive"};
  machine.companions = {{"KRXSG_USBDevice", {{"Description", TCIMValue("given")}}}};
  QueryRun run(std::move(machine), with({kBroken}));
  EXPECT_EQ((Texts{"KRXSG_TapeDrive absent of DeviceInventory: the machine file lists none",
                   "KRXSG_USBDevice present of DeviceInventory: "}),
            statesOf(run.request({"KRXSG_TapeDrive", "KRXSG_USBDevice"}, true)));
}

TEST(Collectors, AClassWithoutACollectorShowsTheRefusalOfTheFirst) {
  QueryRun run(bareMachine(), with({}));
  const QueryResult result = run.request({"KRXSG_Vpd", "KRXSG_USBDevice"}, true);
  ASSERT_TRUE(result.error);
  EXPECT_EQ(2, result.error->code);
}

TEST(Collectors, AClassWhoseCollectorIsNotThereIsPutToNobody) {
  constexpr char kMissing[] =
      "no collector serves KRXSG_USBDevice: DeviceInventory (libdeviceinventory.pi.so) is missing "
      "or does not load";
  const struct {
    const char* what;
    CollectorFiles files;
    std::string error;
  } cases[] = {
      {"missing", {{}, {kFirmware}}, kMissing},
      {"broken", {{}, {kFirmware, kBroken}}, kMissing},
  };
  for (const auto& c : cases) {
    QueryRun run(bareMachine(), {c.files, true, false, {}});
    const QueryResult result = run.request({"KRXSG_USBDevice"}, true);
    ASSERT_TRUE(result.error) << c.what;
    EXPECT_EQ(c.error, errorText(*result.error)) << c.what;
    EXPECT_EQ(2, result.error->code) << c.what;
    EXPECT_EQ(Texts{}, logOf(result)) << c.what;
  }
}

TEST(Collectors, OfAMachineFileRefuseWhatTheFileDoesNotList) {
  RunOptions options = with({kDevices});
  options.collectors.names = {"IPMIInventory"};
  QueryRun run(bareMachine(), options);
  const QueryResult result = run.request({"KRXSG_USBDevice"}, true);
  ASSERT_TRUE(result.error);
  EXPECT_EQ("TVELException code 2: not served", errorText(*result.error));
  EXPECT_EQ(
      Texts{
          "no collector serves KRXSG_USBDevice: the machine's file does not list DeviceInventory"},
      result.failures);
}

using CollectorsInAFolder = ScratchFolder;

TEST_F(CollectorsInAFolder, APluginOfAnotherNameIsNotTheOneLookedFor) {
  const auto file = folder_ / "libdeviceinventory.pi.so";
  std::filesystem::copy_file(kIpmi, file);
  QueryRun run(bareMachine(), {{{}, {file}}, false, false, {}});
  EXPECT_EQ(
      Texts{file.string() + ": it is looked for as DeviceInventory and calls itself IPMIInventory"},
      run.request({"KRXSG_USBDevice"}, true).failures);
}

TEST(Collectors, AListedCollectorsInstancesMayBeGivenInstead) {
  Machine machine = bareMachine();
  machine.collectors = {"DeviceInventory"};
  machine.givenClasses = {"KRXSG_USBDevice", "KRXSG_TapeDrive"};
  machine.companions = {{"KRXSG_USBDevice", {{"Description", TCIMValue("given")}}}};
  QueryRun run(std::move(machine), with({kBroken}));
  EXPECT_EQ((Texts{"KRXSG_USBDevice", "KRXSG_TapeDrive"}), run.companionClasses());
  const QueryResult result = run.request({"KRXSG_TapeDrive", "KRXSG_USBDevice"}, true);
  EXPECT_FALSE(result.error);
  EXPECT_EQ((Texts{"KRXSG_USBDevice: given"}), rows(result));
}

TEST(Collectors, OnlyListedOnesAreThere) {
  RunOptions options = with({kDevices, kIpmi});
  options.collectors.names = {"IPMIInventory"};
  QueryRun run(bareMachine(), options);
  EXPECT_EQ((Texts{"KRXSG_ManagementController", "KRXSG_IPMIFRU"}), run.companionClasses());
}

TEST(Collectors, OfSeveralNamedPluginsOneHasToServeTheClass) {
  const struct {
    const char* className;
    Texts rows;
    bool isRefused;
  } cases[] = {
      {"KRXSG_USBDevice", {"KRXSG_USBDevice: DeviceInventory"}, false},
      {"KRXSG_PostBIOSVPD", {}, false},
      {"KRXSG_QLA_ComputerSystem", {}, true},
  };
  for (const auto& c : cases) {
    QueryRun run(bareMachine(), {{{kDevices, TEST_PLUGIN}, {}}, true, false, {}});
    const QueryResult result = run.request({c.className}, true);
    EXPECT_EQ(c.rows, rows(result)) << c.className;
    EXPECT_EQ(c.isRefused, result.error.has_value()) << c.className;
  }
}

TEST(Collectors, AnExceptionOfOneIsTheRequestsAndTheOthersAnswer) {
  QueryRun run(bareMachine(), with({kDevices}));
  const QueryResult result =
      run.request({"KRXSG_SystemBIOS", "KRXSG_USBDevice", "KRXSG_HardwareRevisionLevel"}, true);
  EXPECT_EQ(Texts{"KRXSG_USBDevice: DeviceInventory"}, rows(result));
  ASSERT_TRUE(result.error);
  EXPECT_EQ("it broke", result.error->what);
  EXPECT_EQ(Texts{"TestPlugin: (anonymous namespace)::OwnError"}, result.failures);
}

TEST(Collectors, AfterInitTheOthersInstancesAreNew) {
  QueryRun run(bareMachine(), with({kDevices}));
  for (const bool init : {true, true}) {
    EXPECT_EQ(Texts{"KRXSG_cKVM: DeviceInventory"}, rows(run.request({"KRXSG_cKVM"}, init)));
  }
}

TEST(Collectors, WithoutAnyPluginThatLoadsThereIsNoRun) {
  EXPECT_THROW(QueryRun(bareMachine(), {{{kBroken}, {}}, true, false, {}}),
               NKRXVEL20::host::PluginLoadError);
}

}  // namespace
}  // namespace velhost
