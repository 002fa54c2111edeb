// SPDX-License-Identifier: Apache-2.0
#include "vel/splibrary.h"

#include <gtest/gtest.h>

#include "velhost/spdriver.h"

namespace NKRXVEL20 {
namespace {

using Bytes = std::vector<unsigned char>;

TEST(DotCmd, KeepsCopies) {
  Bytes command = {4, 3, 5};
  Bytes data = {7};
  const dotCmd request(2, 3, 1, command.data(), data.data());
  command.assign(3, 0);
  data.assign(1, 0);
  EXPECT_EQ(request.type, 2);
  EXPECT_EQ(request.command, (Bytes{4, 3, 5}));
  EXPECT_EQ(request.data, (Bytes{7}));
}

TEST(DotCmd, LengthsBelowOneMeanNoBytes) {
  const unsigned char byte = 9;
  for (const int length : {0, -1}) {
    const dotCmd request(2, length, length, &byte, &byte);
    EXPECT_EQ(request.command, Bytes{}) << length;
    EXPECT_EQ(request.data, Bytes{}) << length;
    EXPECT_EQ(dotCmd(2, length, length, nullptr, nullptr).data, Bytes{}) << length;
  }
}

TEST(TamberCmd, KeepsCopies) {
  Bytes data = {5, 0, 0x20};
  const TamberCmd request(0x05, 0xA8, 0xA9, 0x56, data.data(), 3, true, false);
  data.assign(3, 0);
  EXPECT_EQ(request.command, (Bytes{0x05, 0xA8, 0xA9, 0x56}));
  EXPECT_EQ(request.data, (Bytes{5, 0, 0x20}));
  EXPECT_TRUE(request.flag0);
  EXPECT_FALSE(request.flag1);
}

TEST(TamberCmd, WithoutData) {
  const TamberCmd request(1, 0xF1, 0xF1, 0x0F, nullptr, 0, false, true);
  EXPECT_EQ(request.data, Bytes{});
  EXPECT_FALSE(request.flag0);
  EXPECT_TRUE(request.flag1);
}

class Instance : public testing::Test {
 protected:
  ~Instance() override { host::setSPLibrary(nullptr); }

  static void set(int count) {
    host::SimulatedSP description;
    description.count = count;
    host::setSPLibrary(host::makeSimulatedSP(description));
  }

  static void sendNothing() {
    dotCmd request(2, 0, 0, nullptr, nullptr);
    int length = 0;
    SPLibrary::GetSplibraryInstance(0)->sendDotCommand(&request, nullptr, &length, 0, 0);
  }

  static void askComponent() {
    unsigned char command[] = {4, 3, 5, 0x0B, 1};
    SPLibrary::GetSplibraryInstance(0)->getComponentdotCmdList(command, 5, nullptr, nullptr,
                                                               nullptr);
  }
};

TEST_F(Instance, NoneUntilItIsSet) {
  EXPECT_EQ(SPLibrary::GetSplibraryInstance(0), nullptr);
  EXPECT_TRUE(host::takeTraffic().empty());
  EXPECT_TRUE(host::componentsAsked().empty());
  EXPECT_TRUE(host::driverUse().commands.empty());
  host::forgetDriverUse();
}

TEST_F(Instance, IsOneForTheProcess) {
  set(3);
  SPLibrary* const library = SPLibrary::GetSplibraryInstance(0);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(library->discoverSPs(), 3);
  EXPECT_EQ(SPLibrary::GetSplibraryInstance(1), library);
}

TEST_F(Instance, NullMeansThatTheDriverCannotBeLoaded) {
  set(1);
  host::setSPLibrary(nullptr);
  EXPECT_EQ(SPLibrary::GetSplibraryInstance(0), nullptr);
}

TEST_F(Instance, TrafficIsTakenOnce) {
  set(1);
  sendNothing();
  sendNothing();
  EXPECT_EQ(host::takeTraffic().size(), 2U);
  EXPECT_EQ(host::takeTraffic().size(), 0U);
  sendNothing();
  EXPECT_EQ(host::takeTraffic().size(), 1U);
}

TEST_F(Instance, TrafficThatIsForgottenIsAnsweredAllTheSame) {
  host::SimulatedSP description;
  description.kind = host::SPKind::kDotCommand;
  const host::SimulatedReply reply = {false, {7}, std::nullopt};
  description.dotCommands = {{0, {}, std::nullopt, {reply}}};
  description.tamberCommands = {{{1, 2, 3, 4}, std::nullopt, {reply}}};
  description.ipmiCommands = {{{}, {reply}}};
  host::setSPLibrary(host::makeSimulatedSP(description), host::Traffic::kForgotten);
  SPLibrary& library = *SPLibrary::GetSplibraryInstance(0);
  dotCmd dot(2, 0, 0, nullptr, nullptr);
  TamberCmd tamber(1, 2, 3, 4, nullptr, 0, false, false);
  Bytes buffer(255);
  int length = 0;
  EXPECT_TRUE(library.sendDotCommand(&dot, buffer.data(), &length, 0, 255));
  EXPECT_TRUE(library.sendTamberCommand(&tamber, &length, buffer.data()));
  EXPECT_TRUE(library.sendIPMICommand(buffer.data(), &length, 255, true));
  askComponent();
  EXPECT_TRUE(host::takeTraffic().empty());
  EXPECT_EQ(host::componentsAsked().size(), 1U);
  EXPECT_EQ(host::driverUse().commands.size(), 3U);
  host::forgetDriverUse();
  EXPECT_TRUE(host::driverUse().commands.empty());
}

TEST_F(Instance, SettingForgetsEarlierTraffic) {
  set(1);
  sendNothing();
  askComponent();
  EXPECT_EQ(host::componentsAsked(), (std::map<Bytes, std::int32_t>{{{4, 3, 5, 0x0B}, -1}}));
  set(1);
  EXPECT_TRUE(host::takeTraffic().empty());
  EXPECT_TRUE(host::componentsAsked().empty());
}

TEST_F(Instance, ComponentsAskedStayWhenTrafficIsTaken) {
  set(1);
  askComponent();
  host::takeTraffic();
  EXPECT_EQ(host::componentsAsked().size(), 1U);
}

}  // namespace
}  // namespace NKRXVEL20
