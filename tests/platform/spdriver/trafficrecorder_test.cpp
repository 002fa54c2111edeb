// SPDX-License-Identifier: Apache-2.0
#include "platform/spdriver/trafficrecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "tests/support/scriptedclock.h"

namespace NKRXVEL20::host {
namespace {

using Kind = TrafficEntry::Kind;

SimulatedReply replyOf(Bytes bytes, std::optional<std::int32_t> length = std::nullopt) {
  return {false, std::move(bytes), length};
}
const SimulatedReply kFails = {true, {}, std::nullopt};

TrafficRecorder recorderOf(SPKind kind, std::vector<SimulatedReply> replies) {
  SimulatedSP description;
  description.kind = kind;
  description.components = {{{4, 3, 5, 0x0B}, 4}};
  description.dotCommands = {{1, {4, 3}, std::nullopt, replies}};
  description.tamberCommands = {{{1, 0xF1, 0xF1, 0x0F}, std::nullopt, replies}};
  description.ipmiCommands = {{{}, replies}};
  return TrafficRecorder(makeSimulatedSP(description));
}

constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();

struct Case {
  const char* what;
  SimulatedReply reply;
  bool answered;
  std::int32_t length;
  Bytes recorded;
};

// The buffer of 6 bytes holds zeros before the send, as the plug-in's do.
const Case kDotCases[] = {
    {"true length", replyOf({1, 2, 3}), true, 3, {1, 2, 3}},
    {"zeros at its end", replyOf({1, 0, 0}), true, 3, {1, 0, 0}},
    {"cut to the buffer", replyOf({1, 2, 3, 4, 5, 6, 7}), true, 6, {1, 2, 3, 4, 5, 6}},
    {"empty", replyOf({}), true, 0, {}},
    {"length told too great", replyOf({1, 2}, kMost), true, kMost, {1, 2, 0, 0, 0, 0}},
    {"length told too small", replyOf({1, 2, 0, 4, 0}, 1), true, 1, {1, 2, 0, 4}},
    {"length told below 0", replyOf({1, 2}, kLeast), true, kLeast, {1, 2}},
    {"fails", kFails, false, 0, {}},
};

TEST(TrafficRecorder, DotCommands) {
  for (const Case& c : kDotCases) {
    TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {c.reply});
    const unsigned char command[] = {4, 3};
    const unsigned char data[] = {7, 8};
    dotCmd request(2, 2, 2, command, data);
    Bytes buffer(6, 0);
    int length = 99;
    EXPECT_EQ(recorder.sendDotCommand(&request, buffer.data(), &length, 1, 6), c.answered);
    const auto traffic = recorder.takeTraffic();
    ASSERT_EQ(traffic.size(), 1U) << c.what;
    EXPECT_EQ(traffic[0].kind, Kind::kDotCommand) << c.what;
    EXPECT_EQ(traffic[0].sp, 1) << c.what;
    EXPECT_EQ(traffic[0].type, 2) << c.what;
    EXPECT_EQ(traffic[0].command, (Bytes{4, 3})) << c.what;
    EXPECT_EQ(traffic[0].data, (Bytes{7, 8})) << c.what;
    EXPECT_EQ(traffic[0].answered, c.answered) << c.what;
    EXPECT_EQ(traffic[0].length, c.length) << c.what;
    EXPECT_EQ(traffic[0].reply, c.recorded) << c.what;
  }
}

// Whatever the buffer's size, what was written last is found.
TEST(TrafficRecorder, DotCommandsOfWhichNoLengthIsTold) {
  for (const int size : {1, 63, 64, 65, 128, 150}) {
    for (int written = 0; written <= size; ++written) {
      const Bytes reply(static_cast<std::size_t>(written), 0x41);
      TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {replyOf(reply, 0)});
      const unsigned char command[] = {4, 3};
      dotCmd request(2, 2, 0, command, nullptr);
      Bytes buffer(static_cast<std::size_t>(size), 0);
      int length = 99;
      EXPECT_TRUE(recorder.sendDotCommand(&request, buffer.data(), &length, 1, size));
      EXPECT_EQ(reply, recorder.takeTraffic().at(0).reply) << written << " of " << size;
    }
  }
}

TEST(TrafficRecorder, DotCommandWithoutBuffer) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {replyOf({1})});
  const unsigned char command[] = {4, 3};
  dotCmd request(2, 2, 0, command, nullptr);
  int length = 99;
  EXPECT_TRUE(recorder.sendDotCommand(&request, nullptr, &length, 1, -1));
  EXPECT_EQ(recorder.takeTraffic().at(0).reply, Bytes{});
}

// The length counts the bytes behind the 3-byte header.
const Case kTamberCases[] = {
    {"true length", replyOf({9, 8, 7, 'Y', 0}), true, 2, {9, 8, 7, 'Y', 0}},
    {"less than the header", replyOf({9, 8}), true, 0, {9, 8, 0}},
    {"full buffer", replyOf(Bytes(255, 0x41)), true, 252, Bytes(255, 0x41)},
    {"length told too small", replyOf({9, 8, 7, 'Y'}, -3), true, -3, {9, 8, 7, 'Y'}},
    {"greatest length told", replyOf(Bytes(255, 1), kMost), true, kMost, Bytes(255, 1)},
    {"least length told", replyOf({}, kLeast), true, kLeast, {}},
    {"fails", kFails, false, 0, {}},
};

TEST(TrafficRecorder, TamberCommands) {
  for (const Case& c : kTamberCases) {
    TrafficRecorder recorder = recorderOf(SPKind::kTamber, {c.reply});
    unsigned char data[] = {5};
    TamberCmd request(1, 0xF1, 0xF1, 0x0F, data, 1, false, true);
    Bytes buffer(255, 0);
    int length = 99;
    EXPECT_EQ(recorder.sendTamberCommand(&request, &length, buffer.data()), c.answered);
    const auto traffic = recorder.takeTraffic();
    ASSERT_EQ(traffic.size(), 1U) << c.what;
    EXPECT_EQ(traffic[0].kind, Kind::kTamberCommand) << c.what;
    EXPECT_EQ(traffic[0].command, (Bytes{1, 0xF1, 0xF1, 0x0F})) << c.what;
    EXPECT_EQ(traffic[0].data, Bytes{5}) << c.what;
    EXPECT_FALSE(traffic[0].flag0) << c.what;
    EXPECT_TRUE(traffic[0].flag1) << c.what;
    EXPECT_EQ(traffic[0].answered, c.answered) << c.what;
    EXPECT_EQ(traffic[0].length, c.length) << c.what;
    EXPECT_EQ(traffic[0].reply, c.recorded) << c.what;
  }
}

// The request is kept to its data's end; the buffer of 14 bytes holds more.
const Bytes kRequest = {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1, 0x77, 0x77, 0x77};

const Case kIpmiCases[] = {
    {"true length", replyOf({1, 0x20, 6, 0, 0, 0}), true, 6, {1, 0x20, 6, 0, 0, 0}},
    {"equal to the request", replyOf({1, 0x20, 6, 0}), true, 4, {1, 0x20, 6, 0}},
    {"length told too small", replyOf({1, 0x20, 6, 0, 0xC1, 0}, 0), true, 0, {1, 0x20, 6, 0, 0xC1}},
    {"length told too great",
     replyOf({1, 2}, kMost),
     true,
     kMost,
     {1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"length told below 0", replyOf({1, 2}, -1), true, -1, {1, 2}},
    {"fails", kFails, false, 0, {}},
};

TEST(TrafficRecorder, IpmiCommands) {
  for (const Case& c : kIpmiCases) {
    TrafficRecorder recorder = recorderOf(SPKind::kNone, {c.reply});
    Bytes buffer = kRequest;
    int length = 14;
    EXPECT_EQ(recorder.sendIPMICommand(buffer.data(), &length, 14, true), c.answered);
    EXPECT_EQ(length, c.length) << c.what;
    const auto traffic = recorder.takeTraffic();
    ASSERT_EQ(traffic.size(), 1U) << c.what;
    EXPECT_EQ(traffic[0].kind, Kind::kIpmiCommand) << c.what;
    EXPECT_EQ(traffic[0].command, (Bytes{1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1})) << c.what;
    EXPECT_EQ(traffic[0].answered, c.answered) << c.what;
    EXPECT_EQ(traffic[0].length, c.length) << c.what;
    EXPECT_EQ(traffic[0].reply, c.recorded) << c.what;
  }
}

TEST(TrafficRecorder, ComponentsAskedGoByFourBytes) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {});
  unsigned char listed[] = {4, 3, 5, 0x0B, 1};
  unsigned char absent[] = {4, 3, 5, 0x0C, 1};
  EXPECT_EQ(recorder.getComponentdotCmdList(listed, 5, nullptr, nullptr, nullptr), 4);
  EXPECT_EQ(recorder.getComponentdotCmdList(absent, 4, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(recorder.getComponentdotCmdList(listed, 3, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(recorder.componentsAsked(),
            (std::map<Bytes, std::int32_t>{{{4, 3, 5, 0x0B}, 4}, {{4, 3, 5, 0x0C}, -1}}));
}

// "SP COMMAND sent/refused last reply", for each command.
std::vector<std::string> talliesOf(const TrafficRecorder& recorder) {
  std::vector<std::string> lines;
  for (const CommandTally& tally : recorder.use().commands) {
    std::string line = std::to_string(tally.sp) + ' ' + std::to_string(tally.command.size()) +
                       " bytes " + std::to_string(tally.sent) + '/' + std::to_string(tally.refused);
    lines.push_back(line + (tally.answered ? " answered " : " refused ") +
                    std::to_string(tally.reply.size()));
  }
  return lines;
}

void sendDot(TrafficRecorder& recorder, int sp, const Bytes& command, const Bytes& data) {
  dotCmd request(2, static_cast<int>(command.size()), static_cast<int>(data.size()), command.data(),
                 data.data());
  Bytes buffer(100);
  int length = 0;
  recorder.sendDotCommand(&request, buffer.data(), &length, sp, 100);
}

TEST(TrafficRecorder, CountsEachCommandWhateverItsData) {
  TrafficRecorder recorder =
      recorderOf(SPKind::kDotCommand, {kFails, replyOf(Bytes(70, 1)), kFails});
  sendDot(recorder, 1, {4, 3}, {});
  sendDot(recorder, 1, {4, 3}, {7});
  EXPECT_EQ(talliesOf(recorder), (std::vector<std::string>{"1 2 bytes 2/1 answered 64"}));
  sendDot(recorder, 1, {4, 3}, {7});
  sendDot(recorder, 0, {4, 3}, {});
  EXPECT_EQ(talliesOf(recorder),
            (std::vector<std::string>{"1 2 bytes 3/2 refused 64", "0 2 bytes 1/1 refused 0"}));
  recorder.forgetUse();
  sendDot(recorder, 0, {4, 3}, {});
  EXPECT_EQ(talliesOf(recorder), (std::vector<std::string>{"0 2 bytes 1/1 refused 0"}));
}

TEST(TrafficRecorder, CountsNoMoreCommandsThanItKeeps) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {kFails});
  for (int sp = 0; sp < static_cast<int>(kMostTallies) + 3; ++sp) sendDot(recorder, sp, {4}, {});
  sendDot(recorder, 0, {4}, {});
  EXPECT_EQ(recorder.use().commands.size(), kMostTallies);
  EXPECT_EQ(recorder.use().commands.front().sent, 2U);
}

TEST(TrafficRecorder, CountsNoMoreOfThoseThatCameTooLateEither) {
  ScriptedClock clock;
  const LimitGuard limit(clock.now(), clock);
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {kFails});
  for (int sp = 0; sp < static_cast<int>(kMostTallies) + 3; ++sp) sendDot(recorder, sp, {4}, {});
  sendDot(recorder, 0, {4}, {});
  EXPECT_EQ(recorder.use().commands.size(), kMostTallies);
  EXPECT_EQ(recorder.use().commands.front().unsent, 2U);
  EXPECT_TRUE(recorder.use().isCutOff);
}

TEST(TrafficRecorder, KeepsTheFactsThatWereAskedFor) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {kFails});
  EXPECT_EQ(recorder.use().isDotCommand, std::nullopt);
  recorder.isDotcommand();
  recorder.isTamber();
  EXPECT_EQ(recorder.use().isDotCommand, true);
  EXPECT_EQ(recorder.use().isTamber, false);
  EXPECT_EQ(recorder.use().answers, std::nullopt);
  recorder.checkSPComm();
  recorder.isTvmlibrary();
  recorder.IsBMCMachine();
  recorder.IsIPMIDriversPresent();
  Bytes list(4096);
  recorder.buildDotCommandList(list.data(), list.data(), list.data());
  EXPECT_EQ(recorder.use().answers, true);
  EXPECT_EQ(recorder.use().hasTvmLibrary, false);
  EXPECT_EQ(recorder.use().hasBmc, false);
  EXPECT_EQ(recorder.use().hasIpmiDrivers, false);
  EXPECT_EQ(recorder.use().hasCommandList, true);
  recorder.forgetUse();
  EXPECT_EQ(recorder.use().answers, std::nullopt);
}

TEST(TrafficRecorder, TrafficStaysInOrder) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {replyOf({1})});
  dotCmd dot(2, 0, 0, nullptr, nullptr);
  TamberCmd tamber(1, 2, 3, 4, nullptr, 0, false, false);
  Bytes buffer(255);
  int length = 0;
  recorder.sendTamberCommand(&tamber, &length, buffer.data());
  recorder.sendIPMICommand(buffer.data(), &length, 14, true);
  recorder.sendDotCommand(&dot, buffer.data(), &length, 0, 10);
  std::vector<Kind> kinds;
  for (const TrafficEntry& entry : recorder.takeTraffic()) kinds.push_back(entry.kind);
  EXPECT_EQ(kinds, (std::vector{Kind::kTamberCommand, Kind::kIpmiCommand, Kind::kDotCommand}));
  EXPECT_TRUE(recorder.takeTraffic().empty());
}

// Every question goes through, and the answers of different ones are not mixed up.
TEST(TrafficRecorder, PassesEveryFactOn) {
  const struct {
    const char* what;
    void (*describe)(SimulatedSP&);
    int (*ask)(SPLibrary&);
    int expected;
  } cases[] = {
      {"SPs", [](SimulatedSP& sp) { sp.count = 7; }, [](SPLibrary& l) { return l.discoverSPs(); },
       7},
      {"nodes", [](SimulatedSP& sp) { sp.bmcNodes = 6; },
       [](SPLibrary& l) { return l.GetNumberBMCNode(); }, 6},
      {"silent",
       [](SimulatedSP& sp) {
         sp.kind = SPKind::kDotCommand;
         sp.answers = false;
       },
       [](SPLibrary& l) { return 2 * l.isDotcommand() + l.checkSPComm(); }, 2},
      {"Tamber", [](SimulatedSP& sp) { sp.kind = SPKind::kTamber; },
       [](SPLibrary& l) { return 4 * l.checkSPComm() + 2 * l.isDotcommand() + l.isTamber(); }, 5},
      {"twg stop", [](SimulatedSP& sp) { sp.twgStop = true; },
       [](SPLibrary& l) { return 2 * l.isTwgStop() + l.isTvmlibrary(); }, 2},
      {"Torvik", [](SimulatedSP& sp) { sp.tvmLibrary = true; },
       [](SPLibrary& l) { return 2 * l.isTwgStop() + l.isTvmlibrary(); }, 1},
      {"BMC", [](SimulatedSP& sp) { sp.bmc = true; },
       [](SPLibrary& l) { return 2 * l.IsBMCMachine() + l.IsIPMIDriversPresent(); }, 2},
      {"drivers", [](SimulatedSP& sp) { sp.ipmiDrivers = true; },
       [](SPLibrary& l) { return 2 * l.IsBMCMachine() + l.IsIPMIDriversPresent(); }, 1},
      {"UEFI", [](SimulatedSP& sp) { sp.integratedBmc = true; },
       [](SPLibrary& l) { return 2 * l.IsIntegratedBMC() + l.IsBMCMachine(); }, 2},
  };
  for (const auto& c : cases) {
    SimulatedSP description;
    c.describe(description);
    TrafficRecorder recorder(makeSimulatedSP(description));
    EXPECT_EQ(c.ask(recorder), c.expected) << c.what;
    EXPECT_TRUE(recorder.takeTraffic().empty()) << c.what;
  }
}

TEST(TrafficRecorder, PassesListsAndMatricesOn) {
  TrafficRecorder recorder = recorderOf(SPKind::kDotCommand, {});
  std::vector<Bytes> lists(3, Bytes(4096, 1));
  EXPECT_TRUE(recorder.buildDotCommandList(lists[0].data(), lists[1].data(), lists[2].data()));
  EXPECT_EQ(lists, std::vector<Bytes>(3, Bytes(4096, 0)));
  const unsigned char byte = 'P';
  testing::internal::CaptureStderr();
  recorder.printMatrix(&byte, 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "0000: 50                                               P\n");
}

}  // namespace
}  // namespace NKRXVEL20::host
