// SPDX-License-Identifier: Apache-2.0
//
// Whatever an SP replies, a collection comes to its end and stays inside its buffers; the sanitizer
// build sees a read outside of one.
#include <random>

#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

constexpr std::size_t kLongestReply = 3000;  // past the 2048 bytes of the plug-in's buffer

class AnyReplyTest : public PluginTest {
 protected:
  // A machine that answers every command of the collection with what `reply` gives.
  template <typename Reply>
  void collectWith(const Reply& reply) {
    SimulatedSP description = dotCommandSP(2);
    description.bmcNodes = 2;
    description.components = {{{4, 3, 5, 0x0B}, 2}, {{4, 3, 5, 0x0C}, 2}, {{4, 3, 5, 0x0E}, 2}};
    for (const Bytes& command : commands()) {
      for (int spIndex = 0; spIndex < 2; ++spIndex) {
        answer(description, command, reply(), spIndex);
      }
    }
    useSP(description);
    plugin.Init();
    std::vector<boost::shared_ptr<ICIMClass>> classes = {ns->requestClass("KRXSG_Vpd")};
    plugin.parsedVpdRecords.clear();
    plugin.GetData(ns, classes);
    EXPECT_TRUE(plugin.dataGathered);
  }

  static std::vector<Bytes> commands() {
    std::vector<Bytes> result = {{4, 3, 5, 6, 1}, {4, 3, 5, 6, 2}, {4, 3, 5, 7},
                                 {4, 3, 5, 1, 1}, {4, 3, 5, 1},    {}};
    for (const unsigned char kind : Bytes{0x0B, 0x0C, 0x0D, 0x03, 0x0E, 0x02}) {
      for (unsigned char number = 1; number <= 4; ++number) {
        result.push_back(Bytes{4, 3, 5, kind, number});
      }
    }
    return result;
  }
};

TEST_F(AnyReplyTest, RepliesOfOneByteValueAndAnyLength) {
  host::setMachineType("5010");
  for (const unsigned char value : Bytes{0x00, 0x7F, 0x80, 0xFF, ' '}) {
    for (const int length : {0, 1, 39, 40, 68, 69, 98, 99, 2047, 2048, 2049, 3000}) {
      collectWith([&] { return Bytes(static_cast<std::size_t>(length), value); });
    }
  }
  // Two SPs with 2 DIMMs, 2 power supplies, 2 backplanes and 3 components of one, each collection;
  // the five of no bytes are no records.
  EXPECT_EQ(plugin.vpdInstances.size(), 2U * 9 * 5 * 11);
}

TEST_F(AnyReplyTest, RandomReplies) {
  host::setMachineType("5010");
  std::mt19937 random(20090714);  // NOLINT: the same replies in every run
  std::uniform_int_distribution<std::size_t> length(0, kLongestReply);
  std::uniform_int_distribution<int> byte(0, 255);
  for (int round = 0; round < 50; ++round) {
    collectWith([&] {
      Bytes reply(length(random));
      for (unsigned char& value : reply) value = static_cast<unsigned char>(byte(random));
      return reply;
    });
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
