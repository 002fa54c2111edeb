// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/spbmc.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"
#include "velhost/spdriver.h"

namespace ipmiinventory {
namespace {

namespace host = NKRXVEL20::host;

// Whoever asks, with the driver that answers so.
class SpBmcTest : public ::testing::Test {
 protected:
  ~SpBmcTest() override { host::setSPLibrary(nullptr); }

  static std::optional<Reply> ask(const host::SimulatedReply& reply, const Request& request) {
    host::SimulatedSP sp;
    sp.ipmiCommands = {{{}, {reply}}};
    host::setSPLibrary(host::makeSimulatedSP(sp));
    return makeSpBmc()->ask(request);
  }
};

const Request kRead{Command::kReadFruData, {0x05, 0x08, 0x00, 0x10}, 2};

TEST_F(SpBmcTest, RequestIsARecordForTheBmc) {
  ask({false, hex("01 20 0A 02 00"), {}}, kRead);
  const auto traffic = host::takeTraffic();
  ASSERT_EQ(1U, traffic.size());
  EXPECT_EQ("01 20 0A 02 11 04 00 00 00 05 08 00 10", hexText(traffic[0].command));
  ask({true, {}, {}}, {Command::kGetDeviceId, {}});
  EXPECT_EQ("01 20 06 00 01 00 00 00 00", hexText(host::takeTraffic()[0].command));
}

TEST_F(SpBmcTest, ReplyIsCutFromTheRecord) {
  const struct {
    const char* what;
    const char* record;
    std::optional<std::int32_t> length;
    std::uint8_t code;
    const char* data;
  } kCases[] = {
      {"data", "01 20 0B 02 00 AA BB", {}, 0x00, "AA BB"},
      {"a refusal with data", "01 20 0B 02 CA 01", {}, 0xCA, "01"},
      {"a completion code alone", "01 20 0B 02 C9", {}, 0xC9, ""},
      {"a head alone", "01 20 0B 02", {}, 0xFF, ""},
      {"nothing", "", {}, 0xFF, ""},
      {"a length below 0", "01 20 0B 02 00 AA", -7, 0xFF, ""},
      {"a shorter length", "01 20 0B 02 00 AA BB", 6, 0x00, "AA"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ((Reply{c.code, hex(c.data)}), ask({false, hex(c.record), c.length}, kRead)) << c.what;
  }
  EXPECT_EQ(std::nullopt, ask({true, {}, {}}, kRead));
}

TEST_F(SpBmcTest, ReplyEndsAtTheRecordsEnd) {
  const auto longest = ask({false, Bytes(300, 0x00), {}}, kRead);
  EXPECT_EQ(251U, longest->data.size());
  const auto told = ask({false, hex("01 20 0B 02 00 AA"), 1 << 30}, kRead);
  EXPECT_EQ(251U, told->data.size());
}

TEST_F(SpBmcTest, WithoutADriverNobodyAnswers) {
  host::setSPLibrary(nullptr);
  EXPECT_FALSE(makeSpBmc()->ask(kRead));
}

}  // namespace
}  // namespace ipmiinventory
