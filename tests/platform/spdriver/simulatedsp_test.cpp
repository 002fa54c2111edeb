// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "velhost/spdriver.h"

namespace NKRXVEL20::host {
namespace {

constexpr unsigned char kUntouched = 0xEE;
constexpr int kLengthBefore = -77;

// What one send gave. `buffer` is the whole buffer, bytes that were not written included.
struct Sent {
  bool answered;
  int length;
  Bytes buffer;

  bool operator==(const Sent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Sent& sent) {
  return out << sent.answered << ' ' << sent.length << ' ' << testing::PrintToString(sent.buffer);
}

const Sent kFailed = {false, kLengthBefore, Bytes(6, kUntouched)};

Sent sendDot(SPLibrary& library, const Bytes& command, const Bytes& data = {}, int sp = 0,
             int bufferSize = 6) {
  dotCmd request(2, static_cast<int>(command.size()), static_cast<int>(data.size()), command.data(),
                 data.data());
  Sent sent = {false, kLengthBefore, Bytes(6, kUntouched)};
  sent.answered =
      library.sendDotCommand(&request, sent.buffer.data(), &sent.length, sp, bufferSize);
  return sent;
}

// The 255-byte buffer without what was left untouched at its end.
Sent sendTamber(SPLibrary& library, Bytes data, unsigned char lastCommandByte = 0x0F) {
  TamberCmd request(0x01, 0xF1, 0xF1, lastCommandByte, data.data(), static_cast<int>(data.size()),
                    false, true);
  Sent sent = {false, kLengthBefore, Bytes(256, kUntouched)};
  sent.answered = library.sendTamberCommand(&request, &sent.length, sent.buffer.data());
  while (!sent.buffer.empty() && sent.buffer.back() == kUntouched) sent.buffer.pop_back();
  return sent;
}

Sent sendIpmi(SPLibrary& library, Bytes buffer, int capacity) {
  Sent sent = {false, capacity, std::move(buffer)};
  sent.answered = library.sendIPMICommand(sent.buffer.data(), &sent.length, capacity, true);
  return sent;
}

SimulatedReply replyOf(Bytes bytes) { return {false, std::move(bytes), std::nullopt}; }
SimulatedReply lying(Bytes bytes, std::int32_t length) { return {false, std::move(bytes), length}; }
const SimulatedReply kFails = {true, {}, std::nullopt};

SimulatedSP dotMachine(std::vector<DotCommandEntry> commands) {
  SimulatedSP machine;
  machine.kind = SPKind::kDotCommand;
  machine.dotCommands = std::move(commands);
  return machine;
}

SimulatedSP tamberMachine(std::vector<TamberCommandEntry> commands) {
  SimulatedSP machine;
  machine.kind = SPKind::kTamber;
  machine.tamberCommands = std::move(commands);
  return machine;
}

SimulatedSP ipmiMachine(std::vector<IpmiCommandEntry> commands) {
  SimulatedSP machine;
  machine.ipmiCommands = std::move(commands);
  return machine;
}

// Each entry tried for each command would be ten thousand million comparisons.
TEST(SimulatedSP, ManyEntriesAreNotEachTriedForEachCommand) {
  constexpr int kCommands = 100'000;
  SimulatedSP machine = dotMachine({});
  machine.dotCommands.reserve(kCommands);
  for (int sp = 0; sp < kCommands; ++sp) {
    machine.dotCommands.push_back({sp, {4, 3}, std::nullopt, {replyOf({7})}});
  }
  const auto library = makeSimulatedSP(machine);
  int answered = 0;
  for (int sp = 0; sp < kCommands; ++sp) {
    if (sendDot(*library, {4, 3}, {1}, sp).answered) ++answered;
  }
  EXPECT_EQ(kCommands, answered);
}

TEST(SimulatedSP, TheFirstEntryThatMatchesAnswers) {
  const Bytes data = {8};
  const auto entry = [](std::optional<Bytes> itsData, unsigned char reply) {
    return DotCommandEntry{0, {4}, std::move(itsData), {replyOf({reply})}};
  };
  const struct {
    const char* what;
    std::vector<DotCommandEntry> entries;
    unsigned char reply;
  } cases[] = {
      {"with its data first", {entry(data, 1), entry(std::nullopt, 2)}, 1},
      {"with any data first", {entry(std::nullopt, 1), entry(data, 2)}, 1},
      {"other data first", {entry(Bytes{9}, 1), entry(data, 2)}, 2},
      {"the same twice", {entry(data, 1), entry(data, 2)}, 1},
      {"any data twice", {entry(std::nullopt, 1), entry(std::nullopt, 2)}, 1},
  };
  for (const auto& c : cases) {
    const auto library = makeSimulatedSP(dotMachine(c.entries));
    EXPECT_EQ(c.reply, sendDot(*library, {4}, data).buffer.front()) << c.what;
  }
}

// Each fact by itself, so that no two can be confused.
TEST(SimulatedSP, Facts) {
  struct Facts {
    int sps = 0;
    int nodes = 0;
    bool comm = false, dot = false, tamber = false, twg = false, tvm = false, bmc = false,
         drivers = false, integrated = false;
    bool operator==(const Facts&) const = default;
  };
  const struct {
    const char* what;
    void (*describe)(SimulatedSP&);
    void (*expect)(Facts&);
  } cases[] = {
      {"nothing", [](SimulatedSP&) {}, [](Facts&) {}},
      {"count", [](SimulatedSP& sp) { sp.count = 2; }, [](Facts& f) { f.sps = 2; }},
      {"negative count", [](SimulatedSP& sp) { sp.count = -3; }, [](Facts& f) { f.sps = -3; }},
      {"nodes", [](SimulatedSP& sp) { sp.bmcNodes = 255; }, [](Facts& f) { f.nodes = 255; }},
      {"dot commands", [](SimulatedSP& sp) { sp.kind = SPKind::kDotCommand; },
       [](Facts& f) { f.dot = f.comm = true; }},
      {"Tamber", [](SimulatedSP& sp) { sp.kind = SPKind::kTamber; },
       [](Facts& f) { f.tamber = f.comm = true; }},
      {"silent",
       [](SimulatedSP& sp) {
         sp.kind = SPKind::kDotCommand;
         sp.answers = false;
       },
       [](Facts& f) { f.dot = true; }},
      {"twg stop", [](SimulatedSP& sp) { sp.twgStop = true; }, [](Facts& f) { f.twg = true; }},
      {"Torvik", [](SimulatedSP& sp) { sp.tvmLibrary = true; }, [](Facts& f) { f.tvm = true; }},
      {"BMC", [](SimulatedSP& sp) { sp.bmc = true; }, [](Facts& f) { f.bmc = true; }},
      {"drivers", [](SimulatedSP& sp) { sp.ipmiDrivers = true; },
       [](Facts& f) { f.drivers = true; }},
      {"UEFI", [](SimulatedSP& sp) { sp.integratedBmc = true; },
       [](Facts& f) { f.integrated = true; }},
  };
  for (const auto& c : cases) {
    SimulatedSP description;
    c.describe(description);
    Facts expected;
    c.expect(expected);
    const auto sp = makeSimulatedSP(description);
    const Facts actual = {sp->discoverSPs(),    sp->GetNumberBMCNode(), sp->checkSPComm(),
                          sp->isDotcommand(),   sp->isTamber(),         sp->isTwgStop(),
                          sp->isTvmlibrary(),   sp->IsBMCMachine(),     sp->IsIPMIDriversPresent(),
                          sp->IsIntegratedBMC()};
    EXPECT_TRUE(actual == expected) << c.what;
  }
}

TEST(SimulatedSP, CommandLists) {
  const struct {
    const char* what;
    SPKind kind;
    bool answers;
    bool commandList;
    bool expected;
  } cases[] = {
      {"given", SPKind::kDotCommand, true, true, true},
      {"refused", SPKind::kDotCommand, true, false, false},
      {"a silent SP gives none", SPKind::kDotCommand, false, true, false},
      {"no SP gives none", SPKind::kNone, true, true, false},
  };
  for (const auto& c : cases) {
    SimulatedSP description;
    description.kind = c.kind;
    description.answers = c.answers;
    description.commandList = c.commandList;
    std::vector<Bytes> lists(3, Bytes(4097, kUntouched));
    EXPECT_EQ(makeSimulatedSP(description)
                  ->buildDotCommandList(lists[0].data(), lists[1].data(), lists[2].data()),
              c.expected)
        << c.what;
    Bytes expected(4096, c.expected ? 0 : kUntouched);
    expected.push_back(kUntouched);
    EXPECT_EQ(lists, std::vector<Bytes>(3, expected)) << c.what;
  }
}

TEST(SimulatedSP, ComponentsGoByTheirFirstFourBytes) {
  SimulatedSP description = dotMachine({});
  description.commandList = false;  // changes no count
  description.components = {{{4, 3, 5, 0x0B}, 4}, {{4, 3, 5, 0x0C}, 0}, {{4, 3, 5, 0x0E}, -5}};
  const auto sp = makeSimulatedSP(description);
  const struct {
    const char* what;
    Bytes command;
    int expected;
  } cases[] = {
      {"five bytes", {4, 3, 5, 0x0B, 1}, 4},
      {"the fifth does not matter", {4, 3, 5, 0x0B, 9}, 4},
      {"four bytes", {4, 3, 5, 0x0B}, 4},
      {"three bytes", {4, 3, 5}, -1},
      {"no bytes", {}, -1},
      {"listed with none", {4, 3, 5, 0x0C, 1}, 0},
      {"listed with less", {4, 3, 5, 0x0E, 1}, -5},
      {"absent", {4, 3, 5, 0x0D, 1}, -1},
  };
  for (auto c : cases) {
    EXPECT_EQ(sp->getComponentdotCmdList(c.command.data(), static_cast<int>(c.command.size()),
                                         nullptr, nullptr, nullptr),
              c.expected)
        << c.what;
  }
}

TEST(SimulatedSP, DotCommandsMatch) {
  const auto sp = makeSimulatedSP(dotMachine({
      {0, {4, 3}, Bytes{7}, {replyOf({0xA0})}},
      {0, {4, 3}, std::nullopt, {replyOf({0xA1})}},
      {0, {4, 3}, Bytes{8}, {replyOf({0xA2})}},
      {1, {4, 3}, std::nullopt, {replyOf({0xA3})}},
      {0, {}, std::nullopt, {replyOf({0xA4})}},
      {0, {9}, Bytes{}, {replyOf({0xA5})}},
  }));
  const struct {
    const char* what;
    Bytes command;
    Bytes data;
    int sp;
    int expected;  // the reply's byte; -1: the send fails
  } cases[] = {
      {"command and data", {4, 3}, {7}, 0, 0xA0},
      {"whatever the data", {4, 3}, {}, 0, 0xA1},
      {"the first that matches", {4, 3}, {8}, 0, 0xA1},
      {"other SP", {4, 3}, {7}, 1, 0xA3},
      {"unknown SP", {4, 3}, {7}, 2, -1},
      {"negative SP", {4, 3}, {7}, -1, -1},
      {"command of no bytes", {}, {}, 0, 0xA4},
      {"beginning of a command", {4}, {}, 0, -1},
      {"longer command", {4, 3, 0}, {}, 0, -1},
      {"data of no bytes asked for", {9}, {}, 0, 0xA5},
      {"data of no bytes asked for, and some sent", {9}, {1}, 0, -1},
  };
  for (const auto& c : cases) {
    Sent expected = kFailed;
    if (c.expected >= 0) {
      expected.answered = true;
      expected.length = 1;
      expected.buffer[0] = static_cast<unsigned char>(c.expected);
    }
    EXPECT_EQ(sendDot(*sp, c.command, c.data, c.sp), expected) << c.what;
  }
}

TEST(SimulatedSP, DotRepliesComeInTurn) {
  const auto sp = makeSimulatedSP(dotMachine({
      {0, {1}, std::nullopt, {replyOf({1}), kFails, replyOf({3, 3})}},
      {0, {2}, std::nullopt, {replyOf({7}), kFails}},
  }));
  const Sent first = {true, 1, {1, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}};
  const Sent last = {true, 2, {3, 3, 0xEE, 0xEE, 0xEE, 0xEE}};
  EXPECT_EQ(sendDot(*sp, {1}), first);
  EXPECT_EQ(sendDot(*sp, {1}), kFailed);
  EXPECT_EQ(sendDot(*sp, {2}), (Sent{true, 1, {7, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}}))
      << "an entry has its own turn";
  EXPECT_EQ(sendDot(*sp, {1}), last);
  EXPECT_EQ(sendDot(*sp, {1}), last) << "for ever after";
  EXPECT_EQ(sendDot(*sp, {2}), kFailed);
  EXPECT_EQ(sendDot(*sp, {2}), kFailed) << "for ever after";
}

TEST(SimulatedSP, AnEntryWithoutRepliesFails) {
  const auto sp = makeSimulatedSP(dotMachine({{0, {1}, std::nullopt, {}}}));
  EXPECT_EQ(sendDot(*sp, {1}), kFailed);
  EXPECT_EQ(sendDot(*sp, {1}), kFailed);
}

TEST(SimulatedSP, DotRepliesAreCutToTheBuffer) {
  constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
  constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();
  const Bytes untouched(6, kUntouched);
  const struct {
    const char* what;
    SimulatedReply reply;
    int bufferSize;
    Sent expected;
  } cases[] = {
      {"shorter", replyOf({1, 2}), 6, {true, 2, {1, 2, 0xEE, 0xEE, 0xEE, 0xEE}}},
      {"exact", replyOf({1, 2, 3}), 3, {true, 3, {1, 2, 3, 0xEE, 0xEE, 0xEE}}},
      {"cut", replyOf({1, 2, 3, 4}), 3, {true, 3, {1, 2, 3, 0xEE, 0xEE, 0xEE}}},
      {"empty", replyOf({}), 6, {true, 0, untouched}},
      {"no buffer", replyOf({1}), 0, {true, 0, untouched}},
      {"negative buffer", replyOf({1}), -1, {true, 0, untouched}},
      {"length 0 told", lying({1, 2}, 0), 6, {true, 0, {1, 2, 0xEE, 0xEE, 0xEE, 0xEE}}},
      {"greatest length told",
       lying({1}, kMost),
       1,
       {true, kMost, {1, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}}},
      {"least length told", lying({}, kLeast), 6, {true, kLeast, untouched}},
  };
  for (const auto& c : cases) {
    const auto sp = makeSimulatedSP(dotMachine({{0, {1}, std::nullopt, {c.reply}}}));
    EXPECT_EQ(sendDot(*sp, {1}, {}, 0, c.bufferSize), c.expected) << c.what;
  }
}

TEST(SimulatedSP, TamberCommands) {
  const Bytes full(255, 0x41);
  const struct {
    const char* what;
    TamberCommandEntry entry;
    Bytes data;
    Sent expected;
  } cases[] = {
      {"header and text",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf({9, 8, 7, 'Y', 'U'})}},
       {},
       {true, 2, {9, 8, 7, 'Y', 'U'}}},
      {"header alone",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf({9, 8, 7})}},
       {},
       {true, 0, {9, 8, 7}}},
      {"less than the header",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf({9, 8})}},
       {},
       {true, 0, {9, 8}}},
      {"nothing", {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf({})}}, {}, {true, 0, {}}},
      {"full buffer",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf(full)}},
       {},
       {true, 252, full}},
      {"cut to the buffer",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf(Bytes(300, 0x41))}},
       {},
       {true, 252, full}},
      {"length told",
       {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {lying({9, 8, 7, 'Y'}, -4)}},
       {},
       {true, -4, {9, 8, 7, 'Y'}}},
      {"data matches",
       {{1, 0xF1, 0xF1, 0x0F}, Bytes{5, 0}, {replyOf({9, 8, 7, 1})}},
       {5, 0},
       {true, 1, {9, 8, 7, 1}}},
      {"other data",
       {{1, 0xF1, 0xF1, 0x0F}, Bytes{5, 0}, {replyOf({9, 8, 7, 1})}},
       {5},
       {false, kLengthBefore, {}}},
      {"other command",
       {{1, 0xF1, 0xF1, 0x0E}, std::nullopt, {replyOf({9, 8, 7, 1})}},
       {},
       {false, kLengthBefore, {}}},
      {"three command bytes",
       {{1, 0xF1, 0xF1}, std::nullopt, {replyOf({9, 8, 7, 1})}},
       {},
       {false, kLengthBefore, {}}},
      {"fails", {{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {kFails}}, {}, {false, kLengthBefore, {}}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(sendTamber(*makeSimulatedSP(tamberMachine({c.entry})), c.data), c.expected) << c.what;
  }
}

TEST(SimulatedSP, TamberRepliesComeInTurn) {
  const auto sp = makeSimulatedSP(
      tamberMachine({{{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {kFails, replyOf({0, 0, 0, 2})}}}));
  const Sent last = {true, 1, {0, 0, 0, 2}};
  EXPECT_EQ(sendTamber(*sp, {}), (Sent{false, kLengthBefore, {}}));
  EXPECT_EQ(sendTamber(*sp, {}), last);
  EXPECT_EQ(sendTamber(*sp, {}), last);
}

// A Get Device ID request with 2 bytes of data, and 3 bytes behind them.
const Bytes kRequest = {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1, 0x77, 0x77, 0x77};

TEST(SimulatedSP, IpmiRequestsMatch) {
  Bytes huge = kRequest;
  huge[8] = 0xFF;  // a data length of 0xFF000002: the record ends with the buffer
  const struct {
    const char* what;
    Bytes request;
    int capacity;
    Bytes entry;
    bool answered;
  } cases[] = {
      {"whole record", kRequest, 14, {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1}, true},
      {"beginning", kRequest, 14, {1, 0x20, 6, 0, 1}, true},
      {"nothing asked for", kRequest, 14, {}, true},
      {"other command", kRequest, 14, {1, 0x20, 6, 0, 2}, false},
      {"behind the data", kRequest, 14, {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1, 0x77}, false},
      {"data cut by the capacity", kRequest, 10, {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1}, false},
      {"beginning in the capacity", kRequest, 10, {1, 0x20, 6, 0, 1, 2, 0, 0, 0, 0xD0}, true},
      {"length past the buffer",
       huge,
       14,
       {1, 0x20, 6, 0, 1, 2, 0, 0, 0xFF, 0xD0, 0xD1, 0x77, 0x77, 0x77},
       true},
      {"no room for a length", kRequest, 5, {1, 0x20, 6, 0, 1}, true},
      {"no room for a length, and one asked for", kRequest, 5, {1, 0x20, 6, 0, 1, 2}, false},
      {"no capacity", kRequest, 0, {1}, false},
      {"negative capacity", kRequest, -1, {1}, false},
  };
  for (const auto& c : cases) {
    const auto sp = makeSimulatedSP(ipmiMachine({{c.entry, {replyOf({})}}}));
    const Sent sent = sendIpmi(*sp, c.request, c.capacity);
    EXPECT_EQ(sent.answered, c.answered) << c.what;
    EXPECT_EQ(sent.length, 0) << c.what;
    if (!c.answered) {
      EXPECT_EQ(sent.buffer, c.request) << c.what;
    }
  }
}

TEST(SimulatedSP, IpmiRepliesReplaceTheBuffer) {
  const struct {
    const char* what;
    SimulatedReply reply;
    int capacity;
    Sent expected;
  } cases[] = {
      {"the rest is cleared",
       replyOf({1, 0x20, 7, 0, 0xC1}),
       14,
       {true, 5, {1, 0x20, 7, 0, 0xC1, 0, 0, 0, 0, 0, 0, 0, 0, 0}}},
      {"up to the capacity",
       replyOf({1, 0x20, 7, 0, 0xC1}),
       12,
       {true, 5, {1, 0x20, 7, 0, 0xC1, 0, 0, 0, 0, 0, 0, 0, 0x77, 0x77}}},
      {"cut to the capacity",
       replyOf({1, 2, 3, 4, 5}),
       3,
       {true, 3, {1, 2, 3, 0, 1, 2, 0, 0, 0, 0xD0, 0xD1, 0x77, 0x77, 0x77}}},
      {"length told",
       lying({1, 0x20}, 0x7FFFFFFF),
       10,
       {true, 0x7FFFFFFF, {1, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0xD1, 0x77, 0x77, 0x77}}},
      {"fails", kFails, 14, {false, 0, kRequest}},
  };
  for (const auto& c : cases) {
    const auto sp = makeSimulatedSP(ipmiMachine({{{}, {c.reply}}}));
    EXPECT_EQ(sendIpmi(*sp, kRequest, c.capacity), c.expected) << c.what;
  }
}

TEST(SimulatedSP, IpmiRepliesComeInTurn) {
  const auto sp = makeSimulatedSP(ipmiMachine({{{}, {replyOf({1}), kFails, replyOf({2, 2})}}}));
  EXPECT_EQ(sendIpmi(*sp, kRequest, 14).length, 1);
  EXPECT_EQ(sendIpmi(*sp, kRequest, 14), (Sent{false, 0, kRequest}));
  EXPECT_EQ(sendIpmi(*sp, kRequest, 14).length, 2);
  EXPECT_EQ(sendIpmi(*sp, kRequest, 14).length, 2);
}

TEST(SimulatedSP, WhoAnswers) {
  const struct {
    const char* what;
    SPKind kind;
    bool answers;
    bool sp;
  } cases[] = {
      {"dot-command SP", SPKind::kDotCommand, true, true},
      {"silent dot-command SP", SPKind::kDotCommand, false, false},
      {"Tamber SP", SPKind::kTamber, true, true},
      {"silent Tamber SP", SPKind::kTamber, false, false},
      {"no SP", SPKind::kNone, true, false},
  };
  for (const auto& c : cases) {
    SimulatedSP description;
    description.kind = c.kind;
    description.answers = c.answers;
    description.dotCommands = {{0, {1}, std::nullopt, {replyOf({1})}}};
    description.tamberCommands = {{{1, 0xF1, 0xF1, 0x0F}, std::nullopt, {replyOf({1})}}};
    description.ipmiCommands = {{{}, {replyOf({1})}}};
    const auto sp = makeSimulatedSP(description);
    EXPECT_EQ(sendDot(*sp, {1}).answered, c.sp) << c.what;
    EXPECT_EQ(sendTamber(*sp, {}).answered, c.sp) << c.what;
    EXPECT_TRUE(sendIpmi(*sp, kRequest, 14).answered) << c.what << ": the BMC is another one";
  }
}

TEST(SimulatedSP, EachCommandTakesItsTime) {
  SimulatedSP description;
  description.latency = std::chrono::milliseconds(5);
  const auto sp = makeSimulatedSP(description);
  const auto start = std::chrono::steady_clock::now();
  sendDot(*sp, {1});
  sendTamber(*sp, {});
  sendIpmi(*sp, kRequest, 14);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(15));
}

TEST(SimulatedSP, PrintsMatrices) {
  const unsigned char bytes[] = {'P', '1'};
  testing::internal::CaptureStderr();
  makeSimulatedSP({})->printMatrix(bytes, 2);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "0000: 50 31                                            P1\n");
}

}  // namespace
}  // namespace NKRXVEL20::host
