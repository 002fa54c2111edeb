// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/bmcsession.h"

#include <gtest/gtest.h>

#include "scriptedbmc.h"

namespace ipmiinventory {
namespace {

constexpr char kDeviceId[] = "00 20 01 02 13 02 BF 57 01 00 34 12";

BmcSession session(std::vector<Exchange> exchanges) {
  return BmcSession(std::make_unique<ScriptedBmc>(std::move(exchanges)));
}

TEST(BmcSession, AsksForTheDeviceIdOnce) {
  BmcSession bmc = session({{"06 01", kDeviceId}, {"06 01", kDeviceId}});
  ASSERT_TRUE(bmc.deviceId());
  EXPECT_EQ(0x20, bmc.deviceId()->deviceId);
  bmc.restart();
  EXPECT_TRUE(bmc.deviceId());
}

TEST(BmcSession, NothingIsAskedOfASilentBmcUntilItIsStartedAnew) {
  BmcSession bmc = session({{"06 01", ""}, {"06 08", "00 01"}});
  EXPECT_FALSE(bmc.isSilent());
  EXPECT_FALSE(bmc.deviceId());
  EXPECT_TRUE(bmc.isSilent());
  EXPECT_FALSE(bmc.deviceId());
  EXPECT_FALSE(bmc.ask({Command::kGetDeviceGuid, {}}));
  bmc.restart();
  EXPECT_EQ((Reply{0, {1}}), bmc.ask({Command::kGetDeviceGuid, {}}));
}

TEST(BmcSession, ARefusalIsNoSilence) {
  for (const char* reply : {"C1", "00 20 01", "00"}) {
    BmcSession bmc = session({{"06 01", reply}, {"06 08", "C1"}});
    EXPECT_FALSE(bmc.deviceId()) << reply;
    EXPECT_FALSE(bmc.deviceId()) << reply;
    EXPECT_FALSE(bmc.isSilent()) << reply;
    EXPECT_EQ((Reply{0xC1, {}}), bmc.ask({Command::kGetDeviceGuid, {}}));
  }
}

}  // namespace
}  // namespace ipmiinventory
