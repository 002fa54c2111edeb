// SPDX-License-Identifier: Apache-2.0
#include "platform/spdriver/liveipmi.h"

#include <gtest/gtest.h>

#include "scriptedcalls.h"

namespace NKRXVEL20::host {
namespace {

using Calls = std::vector<std::string>;

const Poll kInput = {};
const std::string kGetDeviceId = "send 1 lun 0 netfn 6 cmd 1 data ";

LiveIpmi openedOver(ScriptedCalls& calls) {
  calls.opens = {{"/dev/ipmi0", {ScriptedCalls::kFile}}};
  LiveIpmi live = makeLiveIpmi(calls);
  calls.takeCalls();
  return live;
}

// The request of the console's level in a buffer of 20 bytes, of which the record takes 14.
// clang-format off
const Bytes kRequest = {
    0x01, 0x20, 0x06, 0x01, 0x52,    // interface, responder, network function, LUN, command
    0x05, 0x00, 0x00, 0x00,          // data length
    0xF5, 0x68, 0x10, 0x1D, 0x01,    // data
    0x77, 0x77, 0x77, 0x77, 0x77, 0x77,
};
// clang-format on
const std::string kSend = "send 1 lun 1 netfn 6 cmd 82 data F568101D01";

struct Sent {
  bool answered;
  int length;
  Bytes buffer;

  bool operator==(const Sent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Sent& sent) {
  return out << sent.answered << ' ' << sent.length << ' ' << testing::PrintToString(sent.buffer);
}

Sent send(SPLibrary& library, Bytes buffer, int capacity) {
  Sent sent = {false, capacity, std::move(buffer)};
  sent.answered = library.sendIPMICommand(sent.buffer.data(), &sent.length, capacity, true);
  return sent;
}

Bytes withDataLength(unsigned char low, unsigned char high) {
  Bytes request = kRequest;
  request[5] = low;
  request[8] = high;
  return request;
}

const Bytes kLongReply(30, 0x41);

const struct {
  const char* what;
  Bytes request;
  int capacity;
  std::deque<Message> messages;
  Sent expected;
  Calls calls;
} kCommands[] = {
    {"answered",
     kRequest,
     20,
     {{1, {0x00, 0x10, 0x11}}},
     {true, 7, {1, 0x20, 6, 1, 0, 0x10, 0x11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
     {kSend, "poll 5000", "receive 16"}},
    {"refused by the BMC",
     kRequest,
     20,
     {{1, {0xC1}}},
     {true, 5, {1, 0x20, 6, 1, 0xC1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
     {kSend, "poll 5000", "receive 16"}},
    {"cleared up to the capacity",
     kRequest,
     18,
     {{1, {0xC1}}},
     {true, 5, {1, 0x20, 6, 1, 0xC1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x77, 0x77}},
     {kSend, "poll 5000", "receive 14"}},
    {"reply cut to the capacity",
     kRequest,
     14,
     {{1, kLongReply}},
     {true, 14, {1,    0x20, 6,    1,    0x41, 0x41, 0x41, 0x41, 0x41, 0x41,
                 0x41, 0x41, 0x41, 0x41, 0x77, 0x77, 0x77, 0x77, 0x77, 0x77}},
     {kSend, "poll 5000", "receive 10"}},
    {"without data",
     withDataLength(0, 0),
     9,
     {{1, {0xC1}}},
     {true, 5, {1,    0x20, 6,    1, 0xC1, 0,    0,    0,    0,    0xF5,
                0x68, 0x10, 0x1D, 1, 0x77, 0x77, 0x77, 0x77, 0x77, 0x77}},
     {"send 1 lun 1 netfn 6 cmd 82 data ", "poll 5000", "receive 5"}},
    {"the device fails",
     kRequest,
     20,
     {{0, {}, 0, -ENODEV}},
     {false, 0, kRequest},
     {kSend, "poll 5000", "receive 16"}},
    {"no completion code",
     kRequest,
     20,
     {{1, {}}},
     {false, 0, kRequest},
     {kSend, "poll 5000", "receive 16"}},
    {"data past the capacity", kRequest, 13, {}, {false, 0, kRequest}, {}},
    {"data length of 0xFF000005",
     withDataLength(5, 0xFF),
     20,
     {},
     {false, 0, withDataLength(5, 0xFF)},
     {}},
    {"no room for a record", kRequest, 8, {}, {false, 0, kRequest}, {}},
    {"negative capacity", kRequest, -1, {}, {false, 0, kRequest}, {}},
};

TEST(LiveIpmi, Commands) {
  for (const auto& c : kCommands) {
    ScriptedCalls calls;
    LiveIpmi live = openedOver(calls);
    calls.polls = {kInput};
    calls.messages = c.messages;
    EXPECT_EQ(send(*live.library, c.request, c.capacity), c.expected) << c.what;
    EXPECT_EQ(calls.takeCalls(), c.calls) << c.what;
  }
}

TEST(LiveIpmi, CommandThatIsNeverAnswered) {
  ScriptedCalls calls;
  LiveIpmi live = openedOver(calls);
  EXPECT_EQ(send(*live.library, kRequest, 20), (Sent{false, 0, kRequest}));
  EXPECT_EQ(calls.takeCalls(), (Calls{kSend, "poll 5000"}));
}

// A silent BMC is waited for once, whoever asks it.
TEST(LiveIpmi, SilenceIsToldAndNothingSentAnyMore) {
  using std::chrono::milliseconds;
  const struct {
    const char* what;
    std::deque<Poll> polls;
    std::deque<Message> messages;
    milliseconds waited;
    bool answered;  // by the driver, in the BMC's place
    Calls calls;
  } cases[] = {
      {"no answer", {}, {}, milliseconds(5000), false, {kSend, "poll 5000"}},
      {"the driver gave up",
       {{1, POLLIN, milliseconds(4100)}},
       {{1, {0xC3}}},
       milliseconds(4100),
       true,
       {kSend, "poll 5000", "receive 16"}},
      {"the driver's interface is broken",
       {{1, POLLIN, milliseconds(1000)}},
       {{1, {0xFF}}},
       milliseconds(1000),
       true,
       {kSend, "poll 5000", "receive 16"}},
      {"device gone",
       {{1, POLLIN, milliseconds(20)}},
       {{0, {}, 0, -ENODEV}},
       milliseconds(20),
       false,
       {kSend, "poll 5000", "receive 16"}},
  };
  for (const auto& c : cases) {
    ScriptedCalls calls;
    LiveIpmi live = openedOver(calls);
    EXPECT_FALSE(*live.silence) << c.what;
    calls.polls = c.polls;
    calls.messages = c.messages;
    EXPECT_EQ(send(*live.library, kRequest, 20).answered, c.answered) << c.what;
    ASSERT_TRUE(*live.silence) << c.what;
    EXPECT_EQ((*live.silence)->device, "/dev/ipmi0") << c.what;
    EXPECT_EQ((*live.silence)->waited, c.waited) << c.what;
    EXPECT_EQ(send(*live.library, kRequest, 20), (Sent{false, 0, kRequest})) << c.what;
    EXPECT_FALSE(live.library->IsBMCMachine()) << c.what;
    EXPECT_EQ(calls.takeCalls(), c.calls) << c.what;
  }
}

TEST(LiveIpmi, AnAnswerOfAnyKindIsNoSilence) {
  const struct {
    const char* what;
    int sent;
    std::deque<Poll> polls;
    std::deque<Message> messages;
  } cases[] = {
      {"good", 0, {kInput}, {{1, {0x00}}}},
      {"refused", 0, {kInput}, {{1, {0xC1}}}},
      {"the BMC's own timeout", 0, {{1, POLLIN, std::chrono::milliseconds(999)}}, {{1, {0xC3}}}},
      {"refused after a while", 0, {{1, POLLIN, std::chrono::milliseconds(3000)}}, {{1, {0xC0}}}},
      {"a request that the driver does not send", -EINVAL, {}, {}},
  };
  for (const auto& c : cases) {
    ScriptedCalls calls;
    LiveIpmi live = openedOver(calls);
    calls.sends = {c.sent};
    calls.polls = c.polls;
    calls.messages = c.messages;
    send(*live.library, kRequest, 20);
    EXPECT_FALSE(*live.silence) << c.what;
  }
}

TEST(LiveIpmi, WithoutDevice) {
  ScriptedCalls calls;
  LiveIpmi live = makeLiveIpmi(calls);
  calls.takeCalls();
  EXPECT_EQ(live.refusedDevice, "");
  EXPECT_FALSE(live.library->IsIPMIDriversPresent());
  EXPECT_FALSE(live.library->IsBMCMachine());
  EXPECT_EQ(send(*live.library, kRequest, 20), (Sent{false, 0, kRequest}));
  EXPECT_EQ(calls.takeCalls(), Calls{});
}

TEST(LiveIpmi, RefusedDeviceCountsAsAbsent) {
  ScriptedCalls calls;
  calls.opens = {{"/dev/ipmi0", {-EACCES}}};
  LiveIpmi live = makeLiveIpmi(calls);
  EXPECT_EQ(live.refusedDevice, "/dev/ipmi0");
  EXPECT_FALSE(live.library->IsIPMIDriversPresent());
  EXPECT_FALSE(live.library->IsBMCMachine());
}

TEST(LiveIpmi, ClosesItsDevice) {
  ScriptedCalls calls;
  openedOver(calls).library.reset();
  EXPECT_EQ(calls.takeCalls(), Calls{"close 7"});
}

TEST(LiveIpmi, BmcAnswersGetDeviceId) {
  const struct {
    const char* what;
    std::deque<Message> messages;
    bool expected;
    Calls calls;
  } cases[] = {
      {"device id",
       {{1, {0x00, 0x20, 0x01, 0x01, 0x00, 0x02}}},
       true,
       {kGetDeviceId, "poll 5000", "receive 16"}},
      {"good code alone", {{1, {0x00}}}, true, {kGetDeviceId, "poll 5000", "receive 16"}},
      {"device in update", {{1, {0xD1}}}, false, {kGetDeviceId, "poll 5000", "receive 16"}},
      {"device gone", {{0, {}, 0, -ENODEV}}, false, {kGetDeviceId, "poll 5000", "receive 16"}},
      {"silent", {}, false, {kGetDeviceId, "poll 5000", "receive 16", "poll 5000"}},
  };
  for (const auto& c : cases) {
    ScriptedCalls calls;
    LiveIpmi live = openedOver(calls);
    calls.polls = {kInput};
    calls.messages = c.messages;
    EXPECT_TRUE(live.library->IsIPMIDriversPresent()) << c.what;
    EXPECT_EQ(live.library->IsBMCMachine(), c.expected) << c.what;
    EXPECT_EQ(live.library->IsBMCMachine(), c.expected) << c.what << ", remembered";
    EXPECT_EQ(calls.takeCalls(), c.calls) << c.what << ", asked once";
  }
}

TEST(LiveIpmi, FirmwareIsUefiWhereTheKernelSaysSo) {
  ScriptedCalls calls;
  LiveIpmi live = makeLiveIpmi(calls);
  EXPECT_FALSE(live.library->IsIntegratedBMC());
  calls.files = {"/sys/firmware/efi"};
  EXPECT_TRUE(live.library->IsIntegratedBMC());
}

TEST(LiveIpmi, HasNoServiceProcessor) {
  ScriptedCalls calls;
  LiveIpmi live = openedOver(calls);
  SPLibrary& library = *live.library;
  EXPECT_EQ(library.discoverSPs(), 0);
  EXPECT_EQ(library.GetNumberBMCNode(), 0);
  EXPECT_FALSE(library.checkSPComm());
  EXPECT_FALSE(library.isDotcommand());
  EXPECT_FALSE(library.isTamber());
  EXPECT_FALSE(library.isTwgStop());
  EXPECT_FALSE(library.isTvmlibrary());
  EXPECT_FALSE(library.buildDotCommandList(nullptr, nullptr, nullptr));
  unsigned char component[] = {4, 3, 5, 0x0B, 1};
  EXPECT_EQ(library.getComponentdotCmdList(component, 5, nullptr, nullptr, nullptr), -1);
  dotCmd dot(2, 0, 0, nullptr, nullptr);
  TamberCmd tamber(1, 0xF1, 0xF1, 0x0F, nullptr, 0, false, true);
  int length = 99;
  EXPECT_FALSE(library.sendDotCommand(&dot, nullptr, &length, 0, 0));
  EXPECT_FALSE(library.sendTamberCommand(&tamber, &length, nullptr));
  EXPECT_EQ(length, 99);
  EXPECT_EQ(calls.takeCalls(), Calls{});
}

TEST(LiveIpmi, PrintsMatrices) {
  ScriptedCalls calls;
  const unsigned char byte = 'P';
  testing::internal::CaptureStderr();
  makeLiveIpmi(calls).library->printMatrix(&byte, 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "0000: 50                                               P\n");
}

}  // namespace
}  // namespace NKRXVEL20::host
