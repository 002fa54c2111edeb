// SPDX-License-Identifier: Apache-2.0
#include "host/recording/recordedtraffic.h"

#include <gtest/gtest.h>

#include "host/text/hextext.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::TrafficEntry;
using Traffic = std::vector<TrafficEntry>;
using Texts = std::vector<std::string>;

constexpr const char* kFails = "fail";

TrafficEntry entry(TrafficEntry::Kind kind, const char* command, const char* data,
                   const char* reply) {
  TrafficEntry made;
  made.kind = kind;
  made.command = bytesOfHex(command);
  made.data = bytesOfHex(data);
  made.answered = reply != kFails;
  if (!made.answered) return made;
  made.reply = bytesOfHex(reply);
  made.length = static_cast<std::int32_t>(made.reply.size());
  return made;
}

TrafficEntry dot(const char* command, const char* data, const char* reply) {
  return entry(TrafficEntry::Kind::kDotCommand, command, data, reply);
}

TrafficEntry onSP(int sp, TrafficEntry made) {
  made.sp = sp;
  return made;
}

TrafficEntry reporting(std::int32_t length, TrafficEntry made) {
  made.length = length;
  return made;
}

TrafficEntry tamber(const char* command, const char* data, std::int32_t length, const char* reply) {
  return reporting(length, entry(TrafficEntry::Kind::kTamberCommand, command, data, reply));
}

TrafficEntry ipmi(const char* request, const char* reply) {
  return entry(TrafficEntry::Kind::kIpmiCommand, request, "", reply);
}

std::string shown(const std::vector<SimulatedReply>& replies) {
  std::string text;
  for (const SimulatedReply& reply : replies) {
    text += " -> " + (reply.fails ? kFails : hexOfBytes(reply.bytes));
    if (reply.length) text += " of " + std::to_string(*reply.length);
  }
  return text;
}

std::string shown(const std::optional<Bytes>& data) {
  return data ? " with " + hexOfBytes(*data) : "";
}

// "SP: COMMAND with DATA -> REPLY of LENGTH -> REPLY of LENGTH"
Texts shown(const SimulatedSP& sp) {
  Texts texts;
  for (const auto& e : sp.dotCommands) {
    texts.push_back(std::to_string(e.sp) + ": " + hexOfBytes(e.command) + shown(e.data) +
                    shown(e.replies));
  }
  for (const auto& e : sp.tamberCommands) {
    texts.push_back("tamber: " + hexOfBytes(e.command) + shown(e.data) + shown(e.replies));
  }
  for (const auto& e : sp.ipmiCommands) {
    texts.push_back("ipmi: " + hexOfBytes(e.request) + shown(e.replies));
  }
  return texts;
}

TEST(RecordedTraffic, BecomesEntriesThatAnswerAlike) {
  const struct {
    const char* what;
    Traffic traffic;
    Texts entries;
  } cases[] = {
      {"nothing was sent", {}, {}},
      {"one command", {dot("0403", "", "AABB")}, {"0: 0403 -> AABB"}},
      {"the command of no bytes", {dot("", "", "")}, {"0:  -> "}},
      {"a send that failed", {dot("0403", "01", kFails)}, {"0: 0403 -> fail"}},
      {"always the same", {dot("04", "", "AA"), dot("04", "", "AA")}, {"0: 04 -> AA"}},
      {"answered the second time",
       {dot("04", "", kFails), dot("04", "", "AA"), dot("04", "", "AA")},
       {"0: 04 -> fail -> AA"}},
      {"fails from the second time on",
       {dot("04", "", "AA"), dot("04", "", kFails), dot("04", "", kFails)},
       {"0: 04 -> AA -> fail"}},
      {"to and fro",
       {dot("04", "", "AA"), dot("04", "", "BB"), dot("04", "", "AA")},
       {"0: 04 -> AA -> BB -> AA"}},
      {"in the order of the first sends",
       {dot("05", "", "AA"), dot("04", "", "BB"), dot("05", "", "CC")},
       {"0: 05 -> AA -> CC", "0: 04 -> BB"}},
      {"each SP by itself",
       {onSP(1, dot("04", "", "AA")), onSP(0, dot("04", "", "BB"))},
       {"1: 04 -> AA", "0: 04 -> BB"}},
      {"data that makes a difference",
       {dot("04", "81", kFails), dot("04", "80", "AA")},
       {"0: 04 with 81 -> fail", "0: 04 with 80 -> AA"}},
      {"data that makes a difference for one of three",
       {dot("04", "81", "AA"), dot("04", "", "AA"), dot("04", "80", "BB")},
       {"0: 04 with 81 -> AA", "0: 04 with  -> AA", "0: 04 with 80 -> BB"}},
      {"data that makes none",
       {dot("04", "81", "AA"), dot("04", "80", "AA"), dot("04", "81", "AA")},
       {"0: 04 -> AA"}},
      {"data that makes a difference to the length",
       {dot("04", "81", "AA"), reporting(5, dot("04", "80", "AA"))},
       {"0: 04 with 81 -> AA", "0: 04 with 80 -> AA of 5"}},
      {"answers in turn to one data, the last of them to another",
       {dot("04", "81", kFails), dot("04", "81", "AA"), dot("04", "80", "AA")},
       {"0: 04 with 81 -> fail -> AA", "0: 04 with 80 -> AA"}},
      {"the same answers in turn to either data are two turns",
       {dot("04", "81", kFails), dot("04", "81", "AA"), dot("04", "80", kFails),
        dot("04", "80", "AA")},
       {"0: 04 with 81 -> fail -> AA", "0: 04 with 80 -> fail -> AA"}},
      {"a length that is not the reply's",
       {reporting(-1, dot("04", "", "AA")), reporting(9, dot("05", "", ""))},
       {"0: 04 -> AA of -1", "0: 05 ->  of 9"}},
      {"one length for replies of different sizes",
       {reporting(2, dot("04", "", "AA")), reporting(2, dot("04", "", "BBCC")),
        dot("04", "", kFails)},
       {"0: 04 -> AA of 2 -> BBCC of 2 -> fail of 2"}},
      {"Tamber: the length is without the header",
       {tamber("01F1F10F", "", 2, "0000005955"), tamber("05A8A856", "01", 0, "000000"),
        tamber("00000000", "", 0, "0000"), tamber("00000001", "", 7, "0000005955")},
       {"tamber: 01F1F10F -> 0000005955", "tamber: 05A8A856 -> 000000", "tamber: 00000000 -> 0000",
        "tamber: 00000001 -> 0000005955 of 7"}},
      {"Tamber: data tells apart",
       {tamber("01F1F10F", "01", 0, "000000"), tamber("01F1F10F", "02", 0, kFails)},
       {"tamber: 01F1F10F with 01 -> 000000", "tamber: 01F1F10F with 02 -> fail"}},
      {"IPMI: a request before those it begins with",
       {ipmi("0120", "AA"), ipmi("01", "BB"), ipmi("0121", "CC"), ipmi("012006", kFails)},
       {"ipmi: 012006 -> fail", "ipmi: 0120 -> AA", "ipmi: 0121 -> CC", "ipmi: 01 -> BB"}},
      {"the kinds do not mix",
       {ipmi("01F1F10F", "AA"), tamber("01F1F10F", "", 0, "000000"), dot("01F1F10F", "", "BB")},
       {"0: 01F1F10F -> BB", "tamber: 01F1F10F -> 000000", "ipmi: 01F1F10F -> AA"}},
  };
  for (const auto& c : cases) {
    SimulatedSP sp;
    addCommands(c.traffic, sp);
    EXPECT_EQ(c.entries, shown(sp)) << c.what;
  }
}

// Each command compared with each other would be ten thousand million comparisons.
TEST(RecordedTraffic, ManyCommandsAreNotEachComparedWithAll) {
  constexpr int kCommands = 50'000;
  Traffic traffic;
  for (int i = 0; i < kCommands; ++i) traffic.push_back(onSP(i, dot("0403", "81", "AA")));
  for (int i = 0; i < kCommands; ++i) traffic.push_back(onSP(i, dot("0403", "80", kFails)));
  SimulatedSP sp;
  addCommands(traffic, sp);
  ASSERT_EQ(2U * kCommands, sp.dotCommands.size());
  EXPECT_EQ(0, sp.dotCommands.front().sp);
  EXPECT_EQ(Bytes{0x80}, sp.dotCommands.back().data);
}

}  // namespace
}  // namespace velhost
