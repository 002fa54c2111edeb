// SPDX-License-Identifier: Apache-2.0
//
// What the firmware collector and the host make of a machine that is too slow for the time that a
// request has, on a clock of the test's own.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "host/collectors/queryrun.h"
#include "host/machine/machine.h"
#include "tests/support/scriptedclock.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;
using NKRXVEL20::host::ScriptedClock;
using std::chrono::milliseconds;

// Its commands take so long each.
Machine slowMachine(const fs::path& file, milliseconds latency, ScriptedClock& clock) {
  Machine machine = machineOfFile(file);
  auto sp = readMachineFile(file).sp;
  sp.latency = latency;
  machine.sp = NKRXVEL20::host::makeSimulatedSP(std::move(sp), clock);
  return machine;
}

class TimeLimit : public ::testing::Test {
 protected:
  QueryRun runOf(const char* machine, milliseconds latency, milliseconds limit) {
    return QueryRun(
        slowMachine(fs::path(MACHINES_DIR) / (std::string(machine) + ".json"), latency, clock_),
        {.collectors = {.loaded = {PLUGIN_FILE}, .onDemand = {}},
         .keepTraffic = true,
         .onCoreLog = {},
         .timeLimit = limit,
         .clock = &clock_});
  }
  QueryResult ask(const char* machine, milliseconds latency, milliseconds limit) {
    QueryRun run = runOf(machine, latency, limit);
    return run.request(run.defaultClasses(), true);
  }

  ScriptedClock clock_;
};

std::map<std::string, std::size_t> instanceCounts(const QueryResult& result) {
  std::map<std::string, std::size_t> counts;
  for (const auto& row : result.instances) ++counts[row.className];
  return counts;
}

const ClassState& stateOf(const QueryResult& result, const std::string& className) {
  return *std::ranges::find(result.states, className, &ClassState::className);
}

std::string told(const QueryResult& result, const std::string& className) {
  const ClassState& state = stateOf(result, className);
  return std::string(stateName(state.state)) + ": " + state.reason;
}

// The two nodes are sent 30 commands: four of firmware to each, then ten components of the first node,
// three DIMMs before the others, ten of the second, and one of POST and BIOS to each.
TEST_F(TimeLimit, WhatWasAnsweredUntilThenIsThere) {
  const auto start = clock_.now();
  const QueryResult result = ask("two-nodes", milliseconds(100), milliseconds(1050));
  EXPECT_EQ(milliseconds(1050), clock_.now() - start);
  EXPECT_TRUE(result.isCutOff);
  EXPECT_FALSE(result.error);
  ASSERT_EQ(11U, result.traffic.size());
  EXPECT_TRUE(result.traffic[9].answered);
  EXPECT_FALSE(result.traffic[10].answered);
  auto counts = instanceCounts(result);
  EXPECT_EQ(2U, counts["KRXSG_SPROMFirmwareVPDMain"]);
  EXPECT_EQ(2U, counts["KRXSG_HardwareRevisionLevel"]);
  EXPECT_EQ(2U, counts["KRXSG_Vpd"]) << "DIMM 1 and 2 of the first node";
  EXPECT_EQ("present: ", told(result, "KRXSG_SPROMFirmwareVPDMain"));
  EXPECT_EQ("present: ", told(result, "KRXSG_HardwareRevisionLevel"));
  EXPECT_EQ(State::kPartial, stateOf(result, "KRXSG_Vpd").state);
  EXPECT_EQ("partial: not asked: the time of 1.05 s was over",
            told(result, "KRXSG_SystemBIOSElement"));
}

// Each command is answered just before the driver would give it up.
TEST_F(TimeLimit, AnSPThatIsSlowEachTimeTakesNoLonger) {
  const auto start = clock_.now();
  const QueryResult result = ask("eight-nodes", milliseconds(4999), milliseconds(20000));
  EXPECT_EQ(milliseconds(20000), clock_.now() - start) << "not 592 times 5 s";
  EXPECT_EQ(5U, result.traffic.size());
  EXPECT_TRUE(result.isCutOff);
}

TEST_F(TimeLimit, WithTimeEnoughNothingIsCutOff) {
  const auto start = clock_.now();
  const QueryResult result = ask("two-nodes", milliseconds(100), milliseconds(3000));
  EXPECT_EQ(milliseconds(3000), clock_.now() - start);
  EXPECT_FALSE(result.isCutOff);
  EXPECT_EQ(30U, result.traffic.size());
  const QueryResult unlimited = ask("two-nodes", milliseconds(100), milliseconds(0));
  for (std::size_t i = 0; i < result.states.size(); ++i) {
    EXPECT_EQ(unlimited.states[i].reason, result.states[i].reason);
  }
}

TEST_F(TimeLimit, WhatNobodyAskedForIsNotMissing) {
  QueryRun run = runOf("two-nodes", milliseconds(100), milliseconds(1050));
  EXPECT_FALSE(run.request({"KRXSG_HardwareRevisionLevel"}, true).isCutOff);
  EXPECT_TRUE(run.request({"KRXSG_HardwareRevisionLevel", "KRXSG_Vpd"}, false).isCutOff);
}

TEST_F(TimeLimit, NothingIsThereInNoTime) {
  const QueryResult result = ask("two-nodes", milliseconds(100), milliseconds(50));
  EXPECT_EQ(1U, result.traffic.size());
  for (const char* const name :
       {"KRXSG_HardwareRevisionLevel", "KRXSG_SPROMFirmwareVPDBootROM", "KRXSG_Vpd"}) {
    EXPECT_EQ("unanswered: not asked: the time of 0.05 s was over", told(result, name));
  }
}

TEST_F(TimeLimit, OtherKindsOfCommands) {
  const struct {
    const char* machine;
    const char* className;
    const char* told;
  } cases[] = {
      {"tamber", "KRXSG_SPROMFirmwareVPDMain",  // SMBIOS tells of it too
       "partial: command 01 F1 F1 0F was not answered when the time of 0.05 s was over"},
      {"ckvm", "KRXSG_cKVM",
       "partial: 1.3.11.37 is a fixed value: command 06 52 was not answered when the time of 0.05 "
       "s "
       "was over"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.told, told(ask(c.machine, milliseconds(100), milliseconds(50)), c.className));
  }
}

// What was collected in time stays; what was not is told again, as nobody asks again before Init.
TEST_F(TimeLimit, EachRequestHasATimeOfItsOwn) {
  QueryRun run = runOf("two-nodes", milliseconds(100), milliseconds(250));
  const std::vector<std::string> classes{"KRXSG_Vpd"};
  EXPECT_TRUE(run.request(classes, true).isCutOff);
  const QueryResult again = run.request(classes, false);
  EXPECT_TRUE(again.isCutOff);
  EXPECT_TRUE(again.traffic.empty());
  EXPECT_EQ("unanswered: not asked: the time of 0.25 s was over", told(again, "KRXSG_Vpd"));
  EXPECT_EQ(3U, run.request(classes, true).traffic.size());
}

TEST_F(TimeLimit, IsGoneWithTheRun) {
  { ask("two-nodes", milliseconds(100), milliseconds(50)); }
  const QueryResult result = ask("two-nodes", milliseconds(100), milliseconds(0));
  EXPECT_EQ(30U, result.traffic.size());
}

}  // namespace
}  // namespace velhost
