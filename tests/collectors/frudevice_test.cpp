// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frudevice.h"

#include <gtest/gtest.h>

#include "scriptedbmc.h"

namespace ipmiinventory {
namespace {

// A device of 256 bytes, or of 128 words.
const Exchange kBytes{"0A 10 05", "00 00 01 00"};
const Exchange kWords{"0A 10 05", "00 00 01 01"};

std::string reply(std::size_t count, std::size_t told) {
  return "00 " + hexText(Bytes{static_cast<std::uint8_t>(told)} + Bytes(count, 0x11));
}
std::string reply(std::size_t count) { return reply(count, count); }

struct ReadCase {
  const char* what;
  std::vector<Exchange> exchanges;
  std::size_t offset;
  std::size_t count;
  const char* fault;  // empty: all bytes are there
};

void expectRead(const ReadCase& c) {
  SCOPED_TRACE(c.what);
  ScriptedBmc bmc(c.exchanges);
  ReadLimit limit;
  FruDevice device(bmc, limit, 5, 0);
  EXPECT_EQ("", device.open());
  const FruBytes read = device.read(c.offset, c.count);
  EXPECT_EQ(c.fault, read.fault);
  EXPECT_EQ(*c.fault == '\0' ? Bytes(c.count, 0x11) : Bytes{}, read.bytes);
}

TEST(FruDevice, ReadsAsMuchAsTheBmcGives) {
  const std::string short3 = reply(3);
  const ReadCase kCases[] = {
      {"all at once", {kBytes, {"0A 11 05 00 00 08", reply(8)}}, 0, 8, ""},
      {"behind 255", {kBytes, {"0A 11 05 00 01 08", reply(8)}}, 256, 8, ""},
      {"more than a reply holds",
       {kBytes, {"0A 11 05 08 00 FA", reply(250)}, {"0A 11 05 02 01 06", reply(6)}},
       8,
       256,
       ""},
      {"words", {kWords, {"0A 11 05 04 00 08", reply(16, 8)}}, 8, 16, ""},
      {"many words",
       {kWords, {"0A 11 05 04 00 7D", reply(250, 125)}, {"0A 11 05 81 00 03", reply(6, 3)}},
       8,
       256,
       ""},
      {"half a word in the end",  // eleven bytes: the next word is the sixth
       {kWords, {"0A 11 05 04 00 08", reply(11, 8)}, {"0A 11 05 09 00 03", reply(6, 3)}},
       8,
       16,
       ""},
      {"fewer than asked for",
       {kBytes, {"0A 11 05 00 00 14", reply(12)}, {"0A 11 05 0C 00 08", reply(8)}},
       0,
       20,
       ""},
      {"more than told", {kBytes, {"0A 11 05 00 00 08", reply(12, 8)}}, 0, 8, ""},
      {"more than asked for", {kBytes, {"0A 11 05 00 00 08", reply(12)}}, 0, 8, ""},
      {"fewer than told",
       {kBytes, {"0A 11 05 00 00 10", reply(8, 16)}, {"0A 11 05 08 00 08", reply(8)}},
       0,
       16,
       ""},
  };
  for (const ReadCase& c : kCases) expectRead(c);
}

TEST(FruDevice, PiecesGetSmallerAfterARefusal) {
  const ReadCase kCases[] = {
      {"by its length",
       {kBytes,
        {"0A 11 05 00 00 48", "C8"},
        {"0A 11 05 00 00 40", "CA"},
        {"0A 11 05 00 00 20", "C7"},
        {"0A 11 05 00 00 10", reply(16)},
        {"0A 11 05 10 00 10", reply(16)},
        {"0A 11 05 20 00 10", reply(16)},
        {"0A 11 05 30 00 10", reply(16)},
        {"0A 11 05 40 00 08", reply(8)}},
       0,
       72,
       ""},
      {"words",
       {kWords,
        {"0A 11 05 00 00 08", "CA"},
        {"0A 11 05 00 00 04", reply(8, 4)},
        {"0A 11 05 04 00 04", reply(8, 4)}},
       0,
       16,
       ""},
      {"not below eight",
       {kBytes, {"0A 11 05 00 00 08", "CA"}},
       0,
       8,
       "cannot be read (completion code CAh)"},
  };
  for (const ReadCase& c : kCases) expectRead(c);
}

TEST(FruDevice, WhatFailsIsToldOnce) {
  const ReadCase kCases[] = {
      {"silence", {kBytes, {"0A 11 05 00 00 08", ""}}, 0, 8, "the BMC does not answer"},
      {"busy", {kBytes, {"0A 11 05 00 00 08", "81"}}, 0, 8, "busy (completion code 81h)"},
      {"absent", {kBytes, {"0A 11 05 00 00 08", "CB"}}, 0, 8, "not there (completion code CBh)"},
      {"another",
       {kBytes, {"0A 11 05 00 00 08", "C9"}},
       0,
       8,
       "cannot be read (completion code C9h)"},
      {"no count", {kBytes, {"0A 11 05 00 00 08", "00"}}, 0, 8, "the BMC's answer is too short"},
      {"no bytes", {kBytes, {"0A 11 05 00 00 08", "00 08"}}, 0, 8, "the BMC's answer is too short"},
      {"a byte", {kBytes, {"0A 11 05 00 00 10", reply(1)}}, 0, 16, "the BMC's answer is too short"},
      {"the second piece",
       {kBytes, {"0A 11 05 00 00 10", reply(8)}, {"0A 11 05 08 00 08", "C9"}},
       0,
       16,
       "cannot be read (completion code C9h)"},
  };
  for (const ReadCase& c : kCases) expectRead(c);
}

TEST(FruDevice, HowMuchTheBmcGivesHoldsForAllDevices) {
  ScriptedBmc bmc({{"0A 10 05", "00 00 01 00"},
                   {"0A 11 05 00 00 10", "CA"},
                   {"0A 11 05 00 00 08", reply(8)},
                   {"0A 11 05 08 00 08", reply(8)},
                   {"2: 0A 10 06", "00 00 01 00"},
                   {"2: 0A 11 06 00 00 08", reply(8)},
                   {"2: 0A 11 06 08 00 08", reply(8)}});
  ReadLimit limit;
  FruDevice first(bmc, limit, 5, 0);
  FruDevice second(bmc, limit, 6, 2);
  EXPECT_EQ("", first.open());
  EXPECT_EQ("", first.read(0, 16).fault);
  EXPECT_EQ("", second.open());
  EXPECT_EQ("", second.read(0, 16).fault);
}

TEST(FruDevice, AnAreasStartIsAllUpToTheNextOrEightBytes) {
  ScriptedBmc bmc({{"0A 10 05", "00 00 02 00"},
                   {"0A 11 05 08 00 48", reply(0x48)},
                   {"0A 11 05 08 00 08", reply(8)}});
  ReadLimit limit;
  FruDevice device(bmc, limit, 5, 0);
  EXPECT_EQ("", device.open());
  EXPECT_EQ(0x48U, device.readStart(8, 0x50).bytes.size());
  EXPECT_EQ(8U, device.readStart(8, 512).bytes.size());
}

TEST(FruDevice, OpeningTellsWhatIsWrong) {
  const struct {
    const char* reply;
    const char* fault;
    bool isAbsent;
    std::size_t size;
  } kCases[] = {
      {"00 08 00 00", "", false, 8},
      {"00 0F 01 00", "", false, 264},  // whole units
      {"00 FF FF 00", "", false, 65528},
      {"00 07 00 00", "the device has no room for FRU areas", false, 0},
      {"00 00 00 00", "the device has no room for FRU areas", false, 0},
      {"00 00 01", "the BMC's answer is too short", true, 0},
      {"CB", "not there (completion code CBh)", true, 0},
      {"81", "busy (completion code 81h)", true, 0},
      {"C1", "cannot be read (completion code C1h)", true, 0},
      {"", "the BMC does not answer", true, 0},
  };
  for (const auto& c : kCases) {
    ScriptedBmc bmc(std::vector<Exchange>{{"0A 10 05", c.reply}});
    ReadLimit limit;
    FruDevice device(bmc, limit, 5, 0);
    EXPECT_EQ(c.fault, device.open()) << c.reply;
    EXPECT_EQ(c.isAbsent, device.isAbsent()) << c.reply;
    EXPECT_EQ(c.size, device.size()) << c.reply;
  }
}

}  // namespace
}  // namespace ipmiinventory
