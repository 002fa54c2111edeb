// SPDX-License-Identifier: Apache-2.0
#include "platform/spdriver/ipmidevice.h"

#include <gtest/gtest.h>

#include "scriptedcalls.h"

namespace NKRXVEL20::host {
namespace {

using Bytes = std::vector<unsigned char>;
using Calls = std::vector<std::string>;
using std::chrono::milliseconds;

const struct {
  const char* what;
  std::map<std::string, std::deque<int>> opens;
  bool opened;
  std::string refused;
  Calls calls;
} kOpenings[] = {
    {"first name", {{"/dev/ipmi0", {7}}}, true, "", {"open /dev/ipmi0", "close 7"}},
    {"second name",
     {{"/dev/ipmi/0", {7}}},
     true,
     "",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "close 7"}},
    {"third name",
     {{"/dev/ipmidev/0", {7}}},
     true,
     "",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0", "close 7"}},
    {"file 0 is a file", {{"/dev/ipmi0", {0}}}, true, "", {"open /dev/ipmi0", "close 0"}},
    {"none", {}, false, "", {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0"}},
    {"interrupted",
     {{"/dev/ipmi0", {-EINTR, -EINTR, 7}}},
     true,
     "",
     {"open /dev/ipmi0", "open /dev/ipmi0", "open /dev/ipmi0", "close 7"}},
    {"refused (EACCES)",
     {{"/dev/ipmi0", {-EACCES}}},
     false,
     "/dev/ipmi0",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0"}},
    {"refused (EPERM)",
     {{"/dev/ipmidev/0", {-EPERM}}},
     false,
     "/dev/ipmidev/0",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0"}},
    {"two refused: the first is told",
     {{"/dev/ipmi/0", {-EPERM}}, {"/dev/ipmidev/0", {-EACCES}}},
     false,
     "/dev/ipmi/0",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0"}},
    {"refused, but another one opens",
     {{"/dev/ipmi0", {-EACCES}}, {"/dev/ipmi/0", {7}}},
     true,
     "",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "close 7"}},
    {"no BMC behind it",
     {{"/dev/ipmi0", {-ENODEV}}},
     false,
     "",
     {"open /dev/ipmi0", "open /dev/ipmi/0", "open /dev/ipmidev/0"}},
};

TEST(OpenIpmiDevice, TakesTheFirstThatOpens) {
  for (const auto& c : kOpenings) {
    ScriptedCalls calls;
    calls.opens = c.opens;
    {
      const IpmiOpening opening = openIpmiDevice(calls);
      EXPECT_EQ(opening.device != nullptr, c.opened) << c.what;
      EXPECT_EQ(opening.refused, c.refused) << c.what;
    }
    EXPECT_EQ(calls.takeCalls(), c.calls) << c.what;
  }
}

const unsigned char kData[] = {0xF5, 0x68};
const IpmiRequest kRequest = {6, 2, 0x52, kData};
const std::string kSend = "send 1 lun 2 netfn 6 cmd 82 data F568";

struct Script {
  std::deque<int> sends;
  std::deque<Poll> polls;
  std::deque<Message> messages;
  milliseconds ioctlTakes{0};
};

const Message kReply = {1, {0x00, 0x31, 0x2E}};
const Poll kInput = {};
const Message kInterrupted = {0, {}, 0, -EINTR};

const struct {
  const char* what;
  Script script;
  std::optional<Bytes> reply;
  Calls calls;
} kRequests[] = {
    {"answered",
     {{}, {kInput}, {kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8"}},
    {"completion code alone",
     {{}, {kInput}, {{1, {0xC1}}}},
     Bytes{0xC1},
     {kSend, "poll 5000", "receive 8"}},
    {"exactly the room",
     {{}, {kInput}, {{1, Bytes(8, 0x41)}}},
     Bytes(8, 0x41),
     {kSend, "poll 5000", "receive 8"}},
    {"truncated",
     {{}, {kInput}, {{1, Bytes(9, 0x41)}}},
     Bytes(8, 0x41),
     {kSend, "poll 5000", "receive 8"}},
    {"short: no completion code",
     {{}, {kInput}, {{1, {}}}},
     std::nullopt,
     {kSend, "poll 5000", "receive 8"}},
    {"send interrupted",
     {{-EINTR, -EINTR, 0}, {kInput}, {kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, kSend, kSend, "poll 5000", "receive 8"}},
    {"send interrupted for ever",
     {{-EINTR, -EINTR, -EINTR, -EINTR}, {kInput}, {kReply}, milliseconds(2500)},
     std::nullopt,
     {kSend, kSend}},
    {"send fails", {{-EINVAL}, {}, {}}, std::nullopt, {kSend}},
    {"device gone at the send", {{-ENODEV}, {}, {}}, std::nullopt, {kSend}},
    {"poll interrupted: the limit stays",
     {{}, {{-EINTR, 0, milliseconds(1500)}, kInput}, {kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "poll 3500", "receive 8"}},
    {"poll interrupted for ever",
     {{}, {{-EINTR, 0, milliseconds(3000)}, {-EINTR, 0, milliseconds(3000)}, kInput}, {kReply}},
     std::nullopt,
     {kSend, "poll 5000", "poll 2000"}},
    {"poll fails", {{}, {{-EINVAL, 0, {}}}, {kReply}}, std::nullopt, {kSend, "poll 5000"}},
    {"device gone while waiting (POLLHUP)",
     {{}, {{1, POLLHUP, {}}}, {kReply}},
     std::nullopt,
     {kSend, "poll 5000"}},
    {"device fails while waiting (POLLERR)",
     {{}, {{1, POLLERR, {}}}, {kReply}},
     std::nullopt,
     {kSend, "poll 5000"}},
    {"input before the end",
     {{}, {{1, POLLIN | POLLHUP, {}}}, {kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8"}},
    {"no answer in time", {{}, {}, {kReply}}, std::nullopt, {kSend, "poll 5000"}},
    {"receive interrupted",
     {{}, {kInput}, {kInterrupted, kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8", "receive 8"}},
    {"receive interrupted for ever",
     {{}, {kInput}, {kInterrupted, kInterrupted, kReply}, milliseconds(2500)},
     std::nullopt,
     {kSend, "poll 2500", "receive 8"}},
    {"nothing there after all: wait again",
     {{}, {{1, POLLIN, milliseconds(10)}, kInput}, {{0, {}, 0, -EAGAIN}, kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8", "poll 4990", "receive 8"}},
    {"receive fails",
     {{}, {kInput}, {{0, {}, 0, -EFAULT}}},
     std::nullopt,
     {kSend, "poll 5000", "receive 8"}},
    {"device gone at the receive",
     {{}, {kInput}, {{0, {}, 0, -ENODEV}}},
     std::nullopt,
     {kSend, "poll 5000", "receive 8"}},
    {"an event comes first",
     {{}, {kInput, kInput}, {{1, {9, 9}, IPMI_ASYNC_EVENT_RECV_TYPE}, kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8", "poll 5000", "receive 8"}},
    {"a truncated event comes first",
     {{}, {kInput, kInput}, {{1, Bytes(16, 9), IPMI_ASYNC_EVENT_RECV_TYPE}, kReply}},
     Bytes{0x00, 0x31, 0x2E},
     {kSend, "poll 5000", "receive 8", "poll 5000", "receive 8"}},
    {"only answers to others",
     {{},
      {{1, POLLIN, milliseconds(2000)}, {1, POLLIN, milliseconds(3000)}, kInput},
      {{0, {1}}, {2, {2}}, kReply}},
     std::nullopt,
     {kSend, "poll 5000", "receive 8", "poll 3000", "receive 8"}},
};

TEST(IpmiDevice, EachAnswerOfEachCall) {
  for (const auto& c : kRequests) {
    ScriptedCalls calls;
    calls.sends = c.script.sends;
    calls.polls = c.script.polls;
    calls.messages = c.script.messages;
    calls.ioctlTakes = c.script.ioctlTakes;
    IpmiDevice device(calls, ScriptedCalls::kFile);
    EXPECT_EQ(device.ask(kRequest, 8), c.reply) << c.what;
    EXPECT_EQ(calls.takeCalls(), c.calls) << c.what;
  }
}

TEST(IpmiDevice, LateAnswerOfAnEarlierRequestIsNotTaken) {
  ScriptedCalls calls;
  IpmiDevice device(calls, ScriptedCalls::kFile);
  EXPECT_EQ(device.ask(kRequest, 8), std::nullopt);
  calls.polls = {kInput, kInput};
  calls.messages = {{1, {0x00, 0x11}}, {2, {0x00, 0x22}}};
  EXPECT_EQ(device.ask(kRequest, 8), (Bytes{0x00, 0x22}));
  EXPECT_EQ(calls.takeCalls(), (Calls{kSend, "poll 5000", "send 2 lun 2 netfn 6 cmd 82 data F568",
                                      "poll 5000", "receive 8", "poll 5000", "receive 8"}));
}

TEST(IpmiDevice, DataIsAtMostAMessage) {
  const Bytes data(273, 0);
  ScriptedCalls calls;
  calls.polls = {kInput};
  calls.messages = {kReply};
  IpmiDevice device(calls, ScriptedCalls::kFile);
  EXPECT_EQ(device.ask({6, 0, 1, data}, 8), std::nullopt);
  EXPECT_EQ(calls.takeCalls(), Calls{});
  EXPECT_NE(device.ask({6, 0, 1, std::span(data).first(272)}, 8), std::nullopt);
}

TEST(IpmiDevice, RoomIsAtMostAMessage) {
  ScriptedCalls calls;
  calls.polls = {kInput};
  calls.messages = {kReply};
  IpmiDevice device(calls, ScriptedCalls::kFile);
  EXPECT_EQ(device.ask(kRequest, 100000), (Bytes{0x00, 0x31, 0x2E}));
  EXPECT_EQ(calls.takeCalls(), (Calls{kSend, "poll 5000", "receive 272"}));
}

}  // namespace
}  // namespace NKRXVEL20::host
