// SPDX-License-Identifier: Apache-2.0
#include "host/progress/collectionprogress.h"

#include <gtest/gtest.h>

#include <chrono>

namespace velhost {
namespace {

using NKRXVEL20::host::TimePoint;
using NKRXVEL20::host::TrafficEntry;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Kind = TrafficEntry::Kind;

constexpr std::size_t kWide = 200;

// An SP has two commands of its own and as many as it has DIMMs. Another collector has others.
std::vector<KnownCommand> someCommands() {
  return {{Kind::kDotCommand, bytesOfHex("04 03 05 06 01"), false, "main firmware", {"Firmware"}},
          {Kind::kDotCommand, bytesOfHex("04 03 05 07"), false, "hardware level", {"Firmware"}},
          {Kind::kDotCommand, bytesOfHex("04 03 05 0B"), true, "DIMM", {"Firmware"}},
          {Kind::kDotCommand, bytesOfHex("0A 0A"), false, "fans", {"Fans"}},
          {Kind::kIpmiCommand, bytesOfHex("06 01"), false, "controller", {"Bmc"}},
          {Kind::kTamberCommand, bytesOfHex("01 F1 F1 0F"), false, "main firmware", {"Firmware"}}};
}

class Progress : public ::testing::Test {
 protected:
  static TrafficEntry entryOf(Kind kind, const char* command, int sp) {
    TrafficEntry entry;
    entry.kind = kind;
    entry.command = bytesOfHex(command);
    entry.sp = sp;
    return entry;
  }
  void sends(const char* command, int sp = 0, Kind kind = Kind::kDotCommand) {
    progress_.sends(entryOf(kind, command, sp), now_);
  }
  // Takes a second.
  void asks(const char* command, int sp = 0, Kind kind = Kind::kDotCommand) {
    sends(command, sp, kind);
    now_ += seconds(1);
    progress_.got(entryOf(kind, command, sp), now_);
  }
  std::string text(std::size_t columns = kWide) const { return progress_.text(columns); }

  TimePoint now_{std::chrono::hours(1)};
  CollectionProgress progress_{someCommands()};
};

TEST_F(Progress, NothingIsToldBeforeTheFirstCommand) {
  progress_.found(8);
  progress_.counted(bytesOfHex("04 03 05 0B"), 4);
  EXPECT_EQ("", text());
}

TEST_F(Progress, OneSP) {
  progress_.found(1);
  sends("04 03 05 06 01");
  EXPECT_EQ("SP, main firmware", text());
  asks("04 03 05 06 01");
  EXPECT_EQ("SP, main firmware: 1 command", text());
  asks("04 03 05 07");
  EXPECT_EQ("SP, hardware level: 2 commands", text());
}

// 3 SPs with 2 commands and 4 DIMMs each: 18 commands, a second each.
TEST_F(Progress, WhatIsLeftIsToldWhenItIsKnown) {
  progress_.found(3);
  for (const int sp : {0, 1, 2}) {
    asks("04 03 05 06 01", sp);
    asks("04 03 05 07", sp);
  }
  EXPECT_EQ("SP 3 of 3, hardware level: 6 commands", text());
  progress_.counted(bytesOfHex("04 03 05 0B"), 4);
  sends("04 03 05 0B 01");
  EXPECT_EQ("SP 1 of 3, DIMM 1: 6 of 18 commands, about 12 s left", text());
  asks("04 03 05 0B 01");
  sends("04 03 05 0B 02");
  EXPECT_EQ("SP 1 of 3, DIMM 2: 7 of 18 commands, about 11 s left", text());
  for (const int sp : {0, 1, 2}) {
    for (const char* const command :
         {"04 03 05 0B 01", "04 03 05 0B 02", "04 03 05 0B 03", "04 03 05 0B 04"}) {
      asks(command, sp);
    }
  }
  EXPECT_EQ("SP 3 of 3, DIMM 4: 18 of 18 commands", text());
}

TEST_F(Progress, ComponentsThatAreNotListedAreNone) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), -1);
  asks("04 03 05 06 01");
  EXPECT_EQ("SP 1 of 2, main firmware: 1 of 4 commands, about 3 s left", text());
}

TEST_F(Progress, ACommandThatIsSentAgainCountsOnce) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 0);
  asks("04 03 05 06 01");
  asks("04 03 05 06 01");
  EXPECT_EQ("SP 1 of 2, main firmware: 1 of 4 commands, about 6 s left", text());
}

// Of another collector's commands as soon as one of them is sent.
TEST_F(Progress, CollectorsThatAskNothingDoNotCount) {
  progress_.found(1);
  progress_.counted(bytesOfHex("04 03 05 0B"), 0);
  asks("04 03 05 06 01");
  EXPECT_EQ("SP, main firmware: 1 of 2 commands, about 1 s left", text());
  asks("0A 0A");
  EXPECT_EQ("SP, fans: 2 of 3 commands, about 1 s left", text());
}

TEST_F(Progress, NoTimeIsGuessedWhereItCannotBeKnown) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 1);
  for (const char* const number : {"01", "02", "03", "04", "05", "06", "07"}) {
    asks(("04 03 05 0B " + std::string(number)).c_str());
  }
  EXPECT_EQ("SP 1 of 2, DIMM 7: 7 commands", text()) << "more than were counted";
  progress_.begin(false);
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 0);
  asks("04 03 05 06 01");
  EXPECT_EQ("SP 1 of 2, main firmware: 1 of 4 commands", text()) << "another one comes behind it";
}

TEST_F(Progress, ANewCollectionStartsFromTheBeginning) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 1);
  asks("04 03 05 06 01");
  progress_.begin(true);
  EXPECT_EQ("", text());
  asks("04 03 05 07");
  EXPECT_EQ("SP, hardware level: 1 command", text());
}

TEST_F(Progress, OthersThanDotCommands) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 0);
  asks("01 20 06 00 01 00 00 00 00", 0, Kind::kIpmiCommand);
  EXPECT_EQ("BMC, controller: 1 command", text());
  asks("01 20 2C 00 01 00 00 00 00", 0, Kind::kIpmiCommand);
  EXPECT_EQ("BMC: 2 commands", text());
  asks("01 F1 F1 0F", 0, Kind::kTamberCommand);
  EXPECT_EQ("SP, main firmware: 3 commands", text());
  asks("", 1);
  EXPECT_EQ("SP 2 of 2: 0 of 4 commands", text()) << "a command that nobody knows";
}

TEST_F(Progress, NumbersOfSPsThatAreNone) {
  for (const int count : {0, -1}) {
    progress_.begin(true);
    progress_.found(count);
    progress_.counted(bytesOfHex("04 03 05 0B"), 0);
    asks("04 03 05 07");
    EXPECT_EQ("SP, hardware level: 1 command", text()) << count;
  }
}

TEST_F(Progress, WhatHasNoRoomIsLeftOut) {
  progress_.found(2);
  progress_.counted(bytesOfHex("04 03 05 0B"), 0);
  asks("04 03 05 07");
  const std::string whole = "SP 1 of 2, hardware level: 1 of 4 commands, about 3 s left";
  const struct {
    std::size_t columns;
    std::string text;
  } cases[] = {
      {whole.size(), whole},
      {whole.size() - 1, "SP 1 of 2, hardware level: 1 of 4 commands"},
      {41, "SP 1 of 2: 1 of 4 commands"},
      {25, "SP 1 of 2"},
      {9, "SP 1 of 2"},
      {8, ""},
      {0, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, text(c.columns)) << c.columns;
}

TEST(ProgressColumns, LettersMayBeWide) {
  CollectionProgress progress(
      {{Kind::kDotCommand, bytesOfHex("0A"), false, "\u98a8\u6247", {"Fans"}}});
  TrafficEntry entry;
  entry.command = bytesOfHex("0A");
  progress.sends(entry, {});
  EXPECT_EQ("SP, \u98a8\u6247", progress.text(8));
  EXPECT_EQ("SP", progress.text(7));
}

TEST(TimeLeft, InAUnitThatSaysEnough) {
  const std::pair<milliseconds, const char*> cases[] = {
      {milliseconds(1), "about 1 s left"},         {milliseconds(1001), "about 2 s left"},
      {seconds(100), "about 100 s left"},          {milliseconds(100001), "about 2 min left"},
      {seconds(120), "about 2 min left"},          {seconds(121), "about 3 min left"},
      {seconds(6000), "about 100 min left"},       {seconds(6001), "about 2 h left"},
      {std::chrono::hours(30), "about 30 h left"},
  };
  for (const auto& [left, text] : cases) EXPECT_EQ(text, timeLeftText(left));
}

}  // namespace
}  // namespace velhost
