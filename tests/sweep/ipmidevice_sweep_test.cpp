// SPDX-License-Identifier: Apache-2.0
//
// Every call of a conversation with the BMC fails with every error that it documents, once and from
// then on. A request is answered, or it fails and leaves its buffer as it was; who does not answer
// is not asked again; the device is closed at the end, and nobody waits longer than the limit.
#include <gtest/gtest.h>

#include <iostream>

#include "platform/spdriver/liveipmi.h"
#include "tests/platform/spdriver/scriptedcalls.h"
#include "tests/sweep/errnos.h"

namespace sweep {
namespace {

using namespace NKRXVEL20::host;
using std::chrono::milliseconds;

constexpr std::size_t kOften = 10000;
constexpr milliseconds kTimeLimit{5000};

// What a conversation comes to: a look for the BMC, then a command.
struct Ending {
  bool isBmc = false;
  bool answered = false;
  bool isSilent = false;  // it owes an answer

  bool operator==(const Ending&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Ending& ending) {
  return out << "BMC " << ending.isBmc << ", answered " << ending.answered << ", silent "
             << ending.isSilent;
}

const Ending kGood = {true, true, false};
const Ending kNeverAnswers = {false, false, true};
const Ending kFallsSilent = {true, false, true};
const Ending kWrongRequests = {false, false, false};
const Ending kWrongRequest = {true, false, false};
const Ending kNotThisOne = {false, true, false};

const std::vector<unsigned char> kRequest = {0x01, 0x20, 6, 0, 0x52, 1,    0,    0,
                                             0,    0xF5, 0, 0, 0,    0x77, 0x77, 0x77};

class IpmiSweep : public testing::Test {
 protected:
  void TearDown() override {
    std::cout << "faults tried: " << tried_ << '\n';
    RecordProperty("faults", std::to_string(tried_));
    EXPECT_GT(tried_, 0U);
  }

  // A conversation that goes well, but for what a test changes.
  static void goWell(ScriptedCalls& calls) {
    calls.opens = {{"/dev/ipmi0", {ScriptedCalls::kFile}}};
    calls.polls = {Poll{}, Poll{}};
    calls.messages = {{1, {0x00, 0x20}}, {2, {0x00, 0x31}}};
  }

  Ending converse(ScriptedCalls& calls) {
    ++tried_;
    Ending ending;
    const auto start = calls.now();
    {
      LiveIpmi live = makeLiveIpmi(calls);
      ending.isBmc = live.library->IsBMCMachine();
      auto buffer = kRequest;
      int length = -1;
      ending.answered = live.library->sendIPMICommand(buffer.data(), &length,
                                                      static_cast<int>(buffer.size()), true);
      ending.isSilent = live.silence->has_value();
      EXPECT_EQ(ending.answered ? 6 : 0, length);
      EXPECT_EQ(ending.answered, buffer != kRequest);
    }
    EXPECT_LE(calls.now() - start, 2 * kTimeLimit);
    const auto made = calls.takeCalls();
    EXPECT_EQ(1, std::ranges::count(made, "close 7"));
    EXPECT_EQ("close 7", made.back());
    return ending;
  }

  // For a call of the first or the second request.
  static Ending expected(std::size_t request, bool isCallersFault, bool fromThenOn) {
    if (!isCallersFault) return request == 0 ? kNeverAnswers : kFallsSilent;
    if (request == 1) return kWrongRequest;
    return fromThenOn ? kWrongRequests : kNotThisOne;
  }

  unsigned tried_ = 0;
};

TEST_F(IpmiSweep, Sends) {
  for (const int error : documentedErrors().at("ioctl")) {
    for (const std::size_t request : {0U, 1U}) {
      for (const bool fromThenOn : {false, true}) {
        ScriptedCalls calls;
        goWell(calls);
        calls.ioctlTakes = milliseconds(1);
        calls.sends.assign(request, 0);
        calls.sends.insert(calls.sends.end(), fromThenOn ? kOften : 1, -error);
        const bool isCallersFault = error == EINVAL || error == EMSGSIZE;
        // One that was not sent gets no answer, so the first message is the other one's.
        if (isCallersFault && request == 0) calls.messages.pop_front();
        const bool isRetried = error == EINTR && !fromThenOn;
        EXPECT_EQ(isRetried ? kGood : expected(request, isCallersFault, fromThenOn),
                  converse(calls))
            << error << ' ' << request << fromThenOn;
      }
    }
  }
}

TEST_F(IpmiSweep, Polls) {
  for (const int error : documentedErrors().at("poll")) {
    for (const std::size_t request : {0U, 1U}) {
      for (const bool fromThenOn : {false, true}) {
        ScriptedCalls calls;
        goWell(calls);
        calls.polls.resize(request);
        calls.polls.insert(calls.polls.end(), fromThenOn ? kOften : 1,
                           Poll{-error, 0, milliseconds(1)});
        calls.polls.insert(calls.polls.end(), 2, Poll{});
        const bool isRetried = error == EINTR && !fromThenOn;
        EXPECT_EQ(isRetried ? kGood : expected(request, false, fromThenOn), converse(calls))
            << error << ' ' << request << fromThenOn;
      }
    }
  }
}

TEST_F(IpmiSweep, Receives) {
  for (const int error : documentedErrors().at("ioctl")) {
    for (const std::size_t request : {0U, 1U}) {
      for (const bool fromThenOn : {false, true}) {
        if (error == EMSGSIZE) continue;  // delivered nevertheless: a message that is too long
        ScriptedCalls calls;
        goWell(calls);
        calls.ioctlTakes = milliseconds(1);
        calls.polls.assign(kOften + 2, Poll{});
        calls.messages.insert(calls.messages.begin() + static_cast<std::ptrdiff_t>(request),
                              fromThenOn ? kOften : 1, Message{0, {}, 0, -error});
        const bool isRetried = (error == EINTR || error == EAGAIN) && !fromThenOn;
        EXPECT_EQ(isRetried ? kGood : expected(request, false, fromThenOn), converse(calls))
            << error << ' ' << request << fromThenOn;
      }
    }
  }
}

// A device that does not open is none, and the next name is tried.
TEST_F(IpmiSweep, Opens) {
  const char* const names[] = {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"};
  for (const int error : documentedErrors().at("openat")) {
    for (const bool fromThenOn : {false, true}) {
      if (error == EINTR && fromThenOn) continue;  // no kernel does
      ScriptedCalls calls;
      goWell(calls);
      calls.opens.clear();
      for (const char* name : names)
        calls.opens[name] = {fromThenOn ? -error : ScriptedCalls::kFile};
      calls.opens[names[0]] = {-error};
      if (error == EINTR) calls.opens[names[0]].push_back(ScriptedCalls::kFile);
      if (!fromThenOn) {
        EXPECT_EQ(kGood, converse(calls)) << error;
        continue;
      }
      ++tried_;
      const LiveIpmi live = makeLiveIpmi(calls);
      EXPECT_FALSE(live.library->IsIPMIDriversPresent());
      EXPECT_FALSE(live.library->IsBMCMachine());
      const bool isForbidden = error == EACCES || error == EPERM;
      EXPECT_EQ(isForbidden ? names[0] : "", live.refusedDevice) << error;
    }
  }
}

// Replies of every length up to the record's and past it.
TEST_F(IpmiSweep, Replies) {
  for (std::size_t size = 0; size <= 300; ++size) {
    ScriptedCalls calls;
    goWell(calls);
    calls.messages.back().data.assign(size, 0x41);
    ++tried_;
    LiveIpmi live = makeLiveIpmi(calls);
    EXPECT_TRUE(live.library->IsBMCMachine());
    auto buffer = kRequest;
    int length = -1;
    const bool answered = live.library->sendIPMICommand(buffer.data(), &length,
                                                        static_cast<int>(buffer.size()), true);
    EXPECT_EQ(size > 0, answered) << size;
    const std::size_t room = kRequest.size() - 4;
    EXPECT_EQ(size == 0 ? 0 : static_cast<int>(4 + std::min(size, room)), length) << size;
  }
}

}  // namespace
}  // namespace sweep
