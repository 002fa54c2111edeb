// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/queryrun.h"

#include <gtest/gtest.h>

#include "host/collectors/requesterror.h"
#include "host/formats/resultdocument.h"

namespace velhost {
namespace {

using NKRXVEL20::host::LogEntry;
using Names = std::vector<std::string>;

Machine bareMachine() {
  Machine machine;
  machine.source = "file";
  machine.name = "bare";
  machine.machineType = "";
  machine.sp = NKRXVEL20::host::makeSimulatedSP({});
  return machine;
}

RunOptions traced() { return {{{TEST_PLUGIN}, {}}, true, true, {}}; }

Names classNames(const QueryResult& result) {
  Names names;
  for (const auto& instance : result.instances) names.push_back(instance.className);
  return names;
}

TEST(QueryRun, TellsWhoThePluginIs) {
  const QueryRun queryRun(bareMachine(), traced());
  EXPECT_EQ("bare", queryRun.context().machineName);
  EXPECT_EQ("TestPlugin", queryRun.context().plugin.name);
  EXPECT_EQ("0.9", queryRun.context().plugin.version);
  EXPECT_EQ("1.0", queryRun.context().plugin.interfaceVersion);
  EXPECT_EQ(7, queryRun.context().plugin.type);
}

TEST(QueryRun, WithoutClassesAsksForTheTableOfTheFirmwareCollector) {
  EXPECT_EQ((Names{"KRXSG_DiagnosticVPD", "KRXSG_PostBIOSVPD", "KRXSG_SystemBIOSElement",
                   "KRXSG_HardwareRevisionLevel", "KRXSG_Vpd", "KRXSG_SPROMFirmwareVPDMain",
                   "KRXSG_SPROMFirmwareVPDBootROM", "KRXSG_DeviceDriver", "KRXSG_SystemBIOS",
                   "KRXSG_cKVM", "KRXSG_USBTapeFirmwareElement"}),
            QueryRun(bareMachine(), traced()).defaultClasses());
}

TEST(QueryRun, InstancesComeInTheOrderOfTheRequest) {
  QueryRun queryRun(bareMachine(), traced());
  const QueryResult first =
      queryRun.request({"KRXSG_Vpd", "KRXSG_SystemBIOSElement", "KRXSG_Vpd"}, true);
  EXPECT_FALSE(first.error);
  EXPECT_EQ((Names{"KRXSG_Vpd", "KRXSG_SystemBIOSElement", "KRXSG_Vpd"}), first.requested);
  EXPECT_EQ((Names{"KRXSG_Vpd", "KRXSG_Vpd", "KRXSG_SystemBIOSElement", "KRXSG_Vpd", "KRXSG_Vpd"}),
            classNames(first));
  const QueryResult second = queryRun.request({"KRXSG_SystemBIOSElement"}, false);
  EXPECT_EQ(Names{"KRXSG_SystemBIOSElement"}, classNames(second));
}

TEST(QueryRun, LogsOfInitCountWithTheRequestThatFollows) {
  std::vector<LogEntry> seen;
  RunOptions options = traced();
  options.onCoreLog = [&](const LogEntry& entry) { seen.push_back(entry); };
  QueryRun queryRun(bareMachine(), options);
  const QueryResult first = queryRun.request({"KRXSG_DeviceDriver"}, true);
  EXPECT_EQ((std::vector<LogEntry>{{3, "Init"}, {3, "progress"}, {1, "two\nlines \xFF"}}),
            first.coreLog);
  EXPECT_EQ((std::vector<LogEntry>{{3, "not available"}}), first.failureLog);
  EXPECT_EQ(first.coreLog, seen);
  const QueryResult second = queryRun.request({"KRXSG_PostBIOSVPD"}, false);
  EXPECT_TRUE(second.coreLog.empty() && second.failureLog.empty());
  const QueryResult third = queryRun.request({"KRXSG_PostBIOSVPD"}, true);
  EXPECT_EQ((std::vector<LogEntry>{{3, "Init"}}), third.coreLog);
}

TEST(QueryRun, OnlyWhatIsAskedForIsKept) {
  for (const bool logs : {false, true}) {
    for (const bool traffic : {false, true}) {
      QueryRun queryRun(bareMachine(), {{{TEST_PLUGIN}, {}}, logs, traffic, {}});
      const QueryResult logged = queryRun.request({"KRXSG_DeviceDriver"}, true);
      EXPECT_EQ(logs, !logged.coreLog.empty()) << traffic;
      EXPECT_EQ(logs, !logged.failureLog.empty()) << traffic;
      const QueryResult sent = queryRun.request({"KRXSG_DiagnosticVPD"}, false);
      EXPECT_EQ(traffic, !sent.traffic.empty()) << logs;
    }
  }
}

TEST(QueryRun, AnExceptionEndsTheRequestAndNotTheRun) {
  const struct {
    const char* className;
    const char* exception;
    std::optional<std::int32_t> code;
    const char* what;
  } cases[] = {
      {"KRXSG_USBDevice", "TVELException", 2, "not served"},
      {"KRXSG_SystemBIOS", "std::runtime_error", std::nullopt, "it broke"},
      {"KRXSG_HardwareRevisionLevel", "(anonymous namespace)::OwnError", std::nullopt, ""},
      {"KRXSG_SPROMFirmwareVPDMain", "int", std::nullopt, ""},
  };
  QueryRun queryRun(bareMachine(), traced());
  for (const auto& c : cases) {
    const QueryResult result =
        queryRun.request({"KRXSG_Vpd", c.className, "KRXSG_SystemBIOSElement"}, false);
    EXPECT_EQ((Names{"KRXSG_Vpd", "KRXSG_Vpd"}), classNames(result)) << c.className;
    ASSERT_TRUE(result.error) << c.className;
    EXPECT_EQ(c.exception, result.error->exception);
    EXPECT_EQ(c.code, result.error->code) << c.className;
    EXPECT_EQ(c.what, result.error->what);
  }
}

TEST(QueryRun, AFailedInitFailsTheRequestAndIsTriedAgain) {
  Machine machine = bareMachine();
  machine.machineType = "INITFAIL";
  QueryRun queryRun(std::move(machine), traced());
  for (const bool init : {true, false}) {
    const QueryResult result = queryRun.request({"KRXSG_Vpd"}, init);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(40, result.error->code);
    EXPECT_TRUE(result.instances.empty());
    EXPECT_EQ((std::vector<LogEntry>{{3, "Init"}}), result.coreLog);
  }
}

TEST(QueryRun, WhateverInitThrowsFailsTheRequest) {
  Machine machine = bareMachine();
  machine.machineType = "Init";
  QueryRun queryRun(std::move(machine), traced());
  const QueryResult result = queryRun.request({"KRXSG_Vpd"}, true);
  ASSERT_TRUE(result.error);
  EXPECT_EQ("int", errorText(*result.error));
}

TEST(QueryRun, APluginThatDoesNotSayWhoItIsIsNotQueried) {
  Machine machine = bareMachine();
  machine.machineType = "GetName";
  try {
    const QueryRun queryRun(std::move(machine), traced());
    FAIL() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("the plug-in does not say who it is: int", error.what());
  }
}

TEST(QueryRun, WhateverThePluginsEndThrowsIsLogged) {
  for (const std::string call : {"DeInit", "PrepareForUnload"}) {
    Machine machine = bareMachine();
    machine.machineType = call;
    std::vector<LogEntry> seen;
    QueryRun(std::move(machine), {{{TEST_PLUGIN}, {}}, false, false, [&](const LogEntry& entry) {
                                    seen.push_back(entry);
                                  }});
    const std::string text = call + " failed: an exception that is no std::exception";
    EXPECT_EQ((std::vector<LogEntry>{{0, text}}), seen);
  }
}

TEST(QueryRun, TrafficIsToldInOrder) {
  Machine machine = bareMachine();
  NKRXVEL20::host::SimulatedSP sp;
  sp.kind = NKRXVEL20::host::SPKind::kDotCommand;
  sp.count = 2;
  sp.dotCommands = {{1, {4, 3, 5, 6, 1}, {}, {{false, {1, 2, 3}, {}}}}};
  sp.tamberCommands = {{{0x01, 0xF1, 0xF1, 0x0F}, {}, {{false, {0, 0, 0, 'Y'}, {}}}}};
  machine.sp = NKRXVEL20::host::makeSimulatedSP(sp);
  QueryRun queryRun(std::move(machine), traced());
  ResultDocument document(queryRun.context());
  document.add(queryRun.request({"KRXSG_DiagnosticVPD"}, true));
  const auto queries = nlohmann::ordered_json::parse(document.text()).at("queries");
  EXPECT_EQ(R"([{"operation":"dot_command","sp":1,"type":2,"command":"0403050601","data":"0A",)"
            R"("answered":true,"length":3},)"
            R"({"operation":"tamber_command","command":"01F1F10F","data":"",)"
            R"("flags":[false,true],"answered":true,"length":1},)"
            R"({"operation":"ipmi_command","request":"0120060052010000007F",)"
            R"("answered":false,"length":0}])",
            queries.at(0).at("traffic").dump());
}

TEST(QueryRun, CompanionsMissingClassesAndFaultsAreInstalled) {
  using NKRXVEL20::TCIMValue;
  Machine machine = bareMachine();
  machine.companions = {{"KRXSG_USBDevice", {{"Description", TCIMValue("KRX cKVM")}}},
                        {"KRXSG_IPMIFRU", {{"Name", TCIMValue("unseen")}}}};
  machine.missingClasses = {"KRXSG_SystemBIOSElement", "KRXSG_IPMIFRU"};
  machine.faults = {{NKRXVEL20::host::CimOperation::kCreateInstance, "KRXSG_Vpd", "", 2, true}};
  QueryRun queryRun(std::move(machine), traced());
  const QueryResult companions = queryRun.request({"KRXSG_cKVM"}, true);
  ASSERT_EQ(1U, companions.instances.size());
  EXPECT_EQ((NKRXVEL20::host::PropertyList{{"Version", TCIMValue("KRX cKVM")}}),
            companions.instances[0].properties);
  EXPECT_EQ(5, queryRun.request({"KRXSG_SystemBIOSElement"}, false).error.value().code);
  const QueryResult faulty = queryRun.request({"KRXSG_Vpd"}, false);
  EXPECT_EQ("std::runtime_error", faulty.error.value().exception);
  EXPECT_EQ(Names{"KRXSG_Vpd"}, classNames(faulty));
}

TEST(QueryRun, APluginMayBeLoadedAgain) {
  for (int i = 0; i < 2; ++i) {
    QueryRun queryRun(bareMachine(), traced());
    EXPECT_EQ(2U, queryRun.request({"KRXSG_Vpd"}, true).instances.size()) << i;
  }
}

TEST(QueryRun, WhatIsNoPluginIsNotLoaded) {
  for (const char* const file : {"/nowhere/none.pi.so", "/etc/hostname"}) {
    EXPECT_THROW(QueryRun(bareMachine(), {{{file}, {}}, false, false, {}}),
                 NKRXVEL20::host::PluginLoadError);
  }
}

}  // namespace
}  // namespace velhost
