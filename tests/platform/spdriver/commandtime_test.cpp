// SPDX-License-Identifier: Apache-2.0
//
// A limit to the time of commands: what the drivers and what is counted make of it.
#include "velhost/commandtime.h"

#include <gtest/gtest.h>

#include "platform/spdriver/liveipmi.h"
#include "platform/spdriver/trafficrecorder.h"
#include "scriptedcalls.h"
#include "tests/support/mocksplibrary.h"
#include "tests/support/scriptedclock.h"

namespace NKRXVEL20::host {
namespace {

using std::chrono::milliseconds;

// Four kinds of commands, each of which takes so long.
SimulatedSP slowSP(milliseconds latency) {
  SimulatedSP description;
  description.kind = SPKind::kDotCommand;
  description.bmc = true;
  description.latency = latency;
  description.dotCommands = {{0, {4, 3}, std::nullopt, {{false, {7}, std::nullopt}}}};
  description.tamberCommands = {{{1, 2, 3, 4}, std::nullopt, {{false, {7}, std::nullopt}}}};
  description.ipmiCommands = {{{}, {{false, {1, 0x20, 7, 0, 0}, std::nullopt}}}};
  return description;
}

bool sendDot(SPLibrary& library) {
  const unsigned char command[] = {4, 3};
  dotCmd request(2, 2, 0, command, nullptr);
  Bytes reply(8, 0);
  int length = 0;
  return library.sendDotCommand(&request, reply.data(), &length, 0, 8);
}

bool sendTamber(SPLibrary& library) {
  TamberCmd request(1, 2, 3, 4, nullptr, 0, false, false);
  Bytes reply(255, 0);
  int length = 0;
  return library.sendTamberCommand(&request, &length, reply.data());
}

bool sendIpmi(SPLibrary& library) {
  Bytes record = {1, 0x20, 6, 0, 1, 0, 0, 0, 0};
  int length = 99;
  const bool answered = library.sendIPMICommand(record.data(), &length, 9, true);
  EXPECT_EQ(answered ? 5 : 0, length);
  return answered;
}

constexpr bool (*kSends[])(SPLibrary&) = {sendDot, sendTamber, sendIpmi};

TEST(CommandTime, CommandsTakeTheirTime) {
  for (const auto send : kSends) {
    ScriptedClock clock;
    const TimePoint start = clock.now();
    const auto library = makeSimulatedSP(slowSP(milliseconds(700)), clock);
    EXPECT_TRUE(send(*library));
    EXPECT_TRUE(send(*library));
    EXPECT_EQ(milliseconds(1400), clock.now() - start);
  }
}

// A limit of 2 s and commands of 700 ms each: two are answered, the third is given up.
TEST(CommandTime, ACommandEndsWithTheTime) {
  for (const auto send : kSends) {
    ScriptedClock clock;
    const TimePoint start = clock.now();
    const LimitGuard limit(start + milliseconds(2000), clock);
    const auto library = makeSimulatedSP(slowSP(milliseconds(700)), clock);
    EXPECT_TRUE(send(*library));
    EXPECT_TRUE(send(*library));
    EXPECT_FALSE(send(*library));
    EXPECT_EQ(milliseconds(2000), clock.now() - start);
  }
}

TEST(CommandTime, AnAnswerAtTheVeryEndCounts) {
  ScriptedClock clock;
  const LimitGuard limit(clock.now() + milliseconds(700), clock);
  EXPECT_TRUE(sendDot(*makeSimulatedSP(slowSP(milliseconds(700)), clock)));
}

TEST(CommandTime, WhenItIsOverNothingIsSent) {
  for (const auto send : kSends) {
    ScriptedClock clock;
    const LimitGuard limit(clock.now() + milliseconds(1000), clock);
    TrafficRecorder recorder(makeSimulatedSP(slowSP(milliseconds(700)), clock));
    for (const bool answered : {true, false, false, false}) EXPECT_EQ(answered, send(recorder));
    EXPECT_EQ(2U, recorder.takeTraffic().size());
    const DriverUse& use = recorder.use();
    EXPECT_TRUE(use.isCutOff);
    ASSERT_EQ(1U, use.commands.size());
    EXPECT_EQ(2U, use.commands[0].sent);
    EXPECT_EQ(1U, use.commands[0].refused);
    EXPECT_EQ(2U, use.commands[0].unsent);
    EXPECT_TRUE(use.commands[0].isCutOff);
    EXPECT_FALSE(use.commands[0].answered);
  }
}

TEST(CommandTime, ARefusalBeforeTheEndIsARefusal) {
  ScriptedClock clock;
  const LimitGuard limit(clock.now() + milliseconds(1000), clock);
  SimulatedSP description = slowSP(milliseconds(999));
  description.dotCommands.clear();
  TrafficRecorder recorder(makeSimulatedSP(description, clock));
  EXPECT_FALSE(sendDot(recorder));
  EXPECT_FALSE(recorder.use().isCutOff);
  EXPECT_FALSE(recorder.use().commands.at(0).isCutOff);
}

TEST(CommandTime, ANewLimitLetsCommandsThrough) {
  ScriptedClock clock;
  TrafficRecorder recorder(makeSimulatedSP(slowSP(milliseconds(0)), clock));
  {
    const LimitGuard limit(clock.now(), clock);
    EXPECT_FALSE(sendDot(recorder));
  }
  EXPECT_TRUE(sendDot(recorder));
  EXPECT_FALSE(recorder.use().commands.at(0).isCutOff);
  EXPECT_TRUE(recorder.use().isCutOff);  // of the collection
}

// A driver that finds no BMC after a second.
std::unique_ptr<SPLibrary> slowWithoutBmc(ScriptedClock& clock) {
  auto library = std::make_unique<testing::NiceMock<spfirmwarevpd::test::MockSPLibrary>>();
  ON_CALL(*library, IsBMCMachine).WillByDefault([&clock] {
    clock.sleep(milliseconds(1000));
    return false;
  });
  return library;
}

TEST(CommandTime, ABmcThatCouldNotBeAskedIsNotNone) {
  const struct {
    const char* what;
    milliseconds limit;
    std::optional<bool> hasBmc;
    bool isCutOff;
  } cases[] = {
      {"in time", milliseconds(1001), false, false},
      {"too late", milliseconds(1000), std::nullopt, true},
  };
  for (const auto& c : cases) {
    ScriptedClock clock;
    const LimitGuard limit(clock.now() + c.limit, clock);
    TrafficRecorder recorder(slowWithoutBmc(clock));
    EXPECT_FALSE(recorder.IsBMCMachine()) << c.what;
    EXPECT_EQ(c.hasBmc, recorder.use().hasBmc) << c.what;
    EXPECT_EQ(c.isCutOff, recorder.use().isCutOff) << c.what;
  }
}

LiveIpmi openedOver(ScriptedCalls& calls) {
  calls.opens = {{"/dev/ipmi0", {ScriptedCalls::kFile}}};
  LiveIpmi live = makeLiveIpmi(calls);
  calls.takeCalls();
  return live;
}

// The BMC is waited for as long as there is time, and is no silent one for that.
TEST(CommandTime, TheLiveDriverWaitsNoLonger) {
  ScriptedCalls calls;
  LiveIpmi live = openedOver(calls);
  ScriptedClock unused;  // the driver has its own
  const LimitGuard limit(calls.now() + milliseconds(1200), unused);
  EXPECT_FALSE(sendIpmi(*live.library));
  EXPECT_EQ((std::vector<std::string>{"send 1 lun 0 netfn 6 cmd 1 data ", "poll 1200"}),
            calls.takeCalls());
  EXPECT_FALSE(*live.silence);
  EXPECT_FALSE(sendIpmi(*live.library));
  EXPECT_FALSE(live.library->IsBMCMachine());
  EXPECT_EQ(std::vector<std::string>(), calls.takeCalls());
}

TEST(CommandTime, TheLiveDriversOwnLimitHoldsToo) {
  ScriptedCalls calls;
  LiveIpmi live = openedOver(calls);
  ScriptedClock unused;
  const LimitGuard limit(calls.now() + milliseconds(60000), unused);
  EXPECT_FALSE(sendIpmi(*live.library));
  EXPECT_EQ((std::vector<std::string>{"send 1 lun 0 netfn 6 cmd 1 data ", "poll 5000"}),
            calls.takeCalls());
  EXPECT_TRUE(*live.silence);
}

TEST(CommandTime, ABmcIsAskedAgainWhenThereIsTime) {
  ScriptedCalls calls;
  LiveIpmi live = openedOver(calls);
  ScriptedClock unused;
  {
    const LimitGuard limit(calls.now() + milliseconds(10), unused);
    EXPECT_FALSE(live.library->IsBMCMachine());
  }
  calls.polls = {Poll{}};
  calls.messages = {{2, {0x00, 0x20}}};
  EXPECT_TRUE(live.library->IsBMCMachine());
}

TEST(CommandTime, TheSystemsClockGoesOn) {
  const TimePoint before = steadyClock().now();
  steadyClock().sleep(std::chrono::microseconds(1));
  EXPECT_LT(before, steadyClock().now());
}

}  // namespace
}  // namespace NKRXVEL20::host
