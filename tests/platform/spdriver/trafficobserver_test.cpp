// SPDX-License-Identifier: Apache-2.0
#include "velhost/trafficobserver.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/scriptedclock.h"
#include "vel/splibrary.h"

namespace NKRXVEL20::host {
namespace {

using Lines = std::vector<std::string>;

std::string hex(const Bytes& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789ABCDEF"[byte / 16];
    text += "0123456789ABCDEF"[byte % 16];
  }
  return text;
}

class Written : public TrafficObserver {
 public:
  Written() { setTrafficObserver(this); }
  ~Written() override { setTrafficObserver(nullptr); }

  void found(int spCount) override { lines_.push_back("found " + std::to_string(spCount)); }
  void counted(const Bytes& component, std::int32_t count) override {
    lines_.push_back("counted " + hex(component) + ' ' + std::to_string(count));
  }
  void sends(const TrafficEntry& command) override {
    lines_.push_back("sends " + std::to_string(command.sp) + ' ' + hex(command.command));
    EXPECT_FALSE(command.answered);
  }
  void got(const TrafficEntry& command) override {
    lines_.push_back("got " + hex(command.command) + (command.answered ? " answered" : " refused"));
  }
  void prints() override { lines_.push_back("prints"); }

  Lines take() { return std::exchange(lines_, {}); }

 private:
  Lines lines_;
};

class Observed : public ::testing::Test {
 protected:
  Observed() {
    SimulatedSP description;
    description.kind = SPKind::kDotCommand;
    description.count = 3;
    description.components = {{{4, 3, 5, 0x0B}, 64}};
    description.dotCommands = {{1, {4, 3}, std::nullopt, {{false, {7}, std::nullopt}}}};
    description.ipmiCommands = {{{}, {{false, {1, 0x20, 7, 0, 0}, std::nullopt}}}};
    setSPLibrary(makeSimulatedSP(description));
  }
  ~Observed() override { setSPLibrary(nullptr); }

  static SPLibrary& library() { return *SPLibrary::GetSplibraryInstance(0); }

  static void sendDot(int sp) {
    const unsigned char command[] = {4, 3};
    dotCmd request(2, 2, 0, command, nullptr);
    Bytes reply(8, 0);
    int length = 0;
    library().sendDotCommand(&request, reply.data(), &length, sp, 8);
  }
};

TEST_F(Observed, EachCommandBeforeAndAfter) {
  Written written;
  sendDot(1);
  sendDot(0);
  EXPECT_EQ((Lines{"sends 1 0403", "got 0403 answered", "sends 0 0403", "got 0403 refused"}),
            written.take());
  TamberCmd tamber(1, 2, 3, 4, nullptr, 0, false, false);
  Bytes reply(255, 0);
  int length = 0;
  library().sendTamberCommand(&tamber, &length, reply.data());
  Bytes record = {1, 0x20, 6, 0, 1, 0, 0, 0, 0, 9};
  library().sendIPMICommand(record.data(), &length, 10, true);
  EXPECT_EQ((Lines{"sends 0 01020304", "got 01020304 refused", "sends 0 012006000100000000",
                   "got 012006000100000000 answered"}),
            written.take());
}

TEST_F(Observed, WhatTheDriverCounts) {
  Written written;
  library().discoverSPs();
  unsigned char command[] = {4, 3, 5, 0x0B, 1};
  library().getComponentdotCmdList(command, 5, nullptr, nullptr, nullptr);
  command[3] = 0x0C;
  library().getComponentdotCmdList(command, 4, nullptr, nullptr, nullptr);
  library().getComponentdotCmdList(command, 3, nullptr, nullptr, nullptr);
  EXPECT_EQ((Lines{"found 3", "counted 0403050B 64", "counted 0403050C -1"}), written.take());
}

TEST_F(Observed, WhatIsPrinted) {
  Written written;
  testing::internal::CaptureStderr();
  library().printMatrix(nullptr, 0);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Lines{"prints"}, written.take());
}

TEST_F(Observed, NothingWhenTheTimeIsOver) {
  Written written;
  ScriptedClock clock;
  const LimitGuard limit(clock.now(), clock);
  sendDot(1);
  EXPECT_EQ(Lines(), written.take());
}

TEST_F(Observed, NobodyNeedsToLook) {
  { const Written written; }
  sendDot(1);
  library().discoverSPs();
  testing::internal::CaptureStderr();
  library().printMatrix(nullptr, 0);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace NKRXVEL20::host
