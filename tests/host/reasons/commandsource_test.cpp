// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/commandsource.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/host/reasons/verdicttext.h"

namespace velhost {
namespace {

using NKRXVEL20::host::CommandTally;
using Kind = NKRXVEL20::host::TrafficEntry::Kind;
using Setup = std::function<void(Observations&)>;

CommandTally dot(const char* command, unsigned sent, unsigned refused, int sp = 0) {
  return {Kind::kDotCommand, sp, bytesOfHex(command), sent, refused, sent > refused, {}};
}

CommandTally tamber(unsigned refused) {
  return {Kind::kTamberCommand, 0, bytesOfHex("01F1F10F"), 1, refused, refused == 0, {}};
}

// Master Write-Read (IPMI 2.0, 22.11) with two bytes of data; `reply` is the reply record.
CommandTally ipmi(const char* reply) {
  const Bytes record = bytesOfHex("01 20 06 00 52 02 00 00 00 F5 68");
  const Bytes bytes = bytesOfHex(reply);
  return {Kind::kIpmiCommand, 0, record, 1, bytes.empty() ? 1U : 0U, !bytes.empty(), bytes};
}

Setup sends(std::vector<CommandTally> tallies) {
  return [=](Observations& seen) { seen.driver.commands = tallies; };
}

struct Row {
  const char* what;
  std::vector<const char*> lines;
  Setup setup;
  const char* verdict;
};

void check(const Row& row) {
  std::vector<Origin> origins;
  for (const char* const line : row.lines) origins.push_back(originOf(line));
  Observations seen;
  if (row.setup) row.setup(seen);
  EXPECT_EQ(row.verdict, told(commandVerdict(origins, seen))) << row.what;
}

const char kLevel[] = "DotCommand.VEL|04 03 05 07|byte 0|decimal";
const char kBoot[] = "DotCommand.VEL|04 03 05 06 02|byte 31|decimal";
const char kDimm[] = "DotCommand.VEL|04 03 05 0B n|data 00 00 7F 00|bytes 73-90|text";
const char kPlanar[] = "DotCommand.VEL|04 03 05 02 01|data 10 00 10 00|bytes 6-17|text";

TEST(CommandSource, DotCommands) {
  const Row rows[] = {
      {"nobody asked anything", {kLevel}, {}, "not looked"},
      {"answered",
       {kLevel},
       sends({dot("04030507", 1, 0)}),
       "looked: what was asked of it was answered, and named none"},
      {"answered when sent again",
       {kLevel},
       sends({dot("04030507", 2, 1)}),
       "looked: what was asked of it was answered, and named none"},
      {"refused once, others answered",
       {kLevel},
       sends({dot("0403050601", 1, 0), dot("04030507", 1, 1)}),
       "unanswered: command 04 03 05 07 was refused once"},
      {"refused twice, nothing answered",
       {kLevel},
       sends({dot("04030507", 2, 2)}),
       "unanswered: no SP answers dot commands: command 04 03 05 07 was refused twice"},
      {"of two SPs one refuses",
       {kLevel},
       sends({dot("04030507", 1, 0), dot("04030507", 3, 3, 1)}),
       "unanswered: 1 of 2 commands was not answered: command 04 03 05 07 was refused "
       "3 "
       "times by SP 2"},
      {"a slot that is empty",
       {kDimm},
       sends({dot("0403050B01", 1, 0), dot("0403050B02", 1, 1), dot("0403050B03", 1, 1)}),
       "unanswered: 2 of 3 commands were not answered; the first: command 04 03 05 0B 02 was "
       "refused once (an empty slot looks so)"},
      {"passed over after a refusal",
       {kLevel},
       sends({dot("0403050601", 1, 0), dot("0403050602", 2, 2), dot("0403050601", 1, 0, 1),
              dot("0403050602", 1, 0, 1), dot("04030507", 1, 0, 1)}),
       "unanswered: SP 1 was not asked 04 03 05 07, as command 04 03 05 06 02 was refused twice by "
       "SP 1"},
      {"asked of the first SP only",
       {kLevel},
       sends({dot("0403050601", 1, 1), dot("0403050601", 1, 1, 1), dot("04030507", 1, 0)}),
       "looked: what was asked of it was answered, and named none"},
      {"refused behind it",
       {kLevel},
       sends({dot("04030507", 1, 0), dot("0403050601", 1, 0), dot("0403050601", 1, 1, 1)}),
       "looked: what was asked of it was answered, and named none"},
      {"a longer command is another one", {kLevel}, sends({dot("0403050701", 1, 0)}), "not looked"},
      {"without its number it is another one",
       {kDimm},
       sends({dot("0403050B", 1, 0)}),
       "not looked"},
      {"not sent after another was refused",
       {kLevel},
       sends({dot("", 30, 30), dot("0403050601", 2, 2), dot("0403050602", 2, 2)}),
       "unanswered: command 04 03 05 07 was not sent after command 04 03 05 06 01 was refused "
       "twice"},
      {"not sent, others answered", {kLevel}, sends({dot("0403050601", 1, 0)}), "not looked"},
      {"another kind of machine",
       {kLevel},
       [](Observations& seen) { seen.driver.isDotCommand = false; },
       "none: no SP speaks dot commands"},
      {"silent",
       {kLevel},
       [](Observations& seen) {
         seen.driver.isDotCommand = true;
         seen.driver.answers = false;
       },
       "unanswered: the service processor does not answer dot commands; check it and its driver"},
      {"no list of commands",
       {kDimm},
       [](Observations& seen) { seen.driver.hasCommandList = false; },
       "unanswered: the service processor did not tell which dot commands it has"},
      {"no such component",
       {kDimm},
       [](Observations& seen) {
         seen.components = {{{4, 3, 5, 0x0B}, 0}, {{4, 3, 5, 0x0C}, 2}};
       },
       "none: the service processor lists no such component"},
      {"one of its components",
       {kDimm, kPlanar},
       [](Observations& seen) {
         seen.components = {{{4, 3, 5, 0x0B}, -1}, {{4, 3, 5, 2}, 1}};
       },
       "not looked"},
      {"no driver",
       {kLevel, kBoot},
       [](Observations& seen) { seen.hasDriver = false; },
       "unreadable: the SP driver could not be loaded"},
  };
  for (const Row& row : rows) check(row);
}

// One that was not answered any more: `unsent` times it was not even sent.
CommandTally cut(CommandTally tally, unsigned unsent) {
  tally.answered = false;
  tally.isCutOff = true;
  tally.unsent = unsent;
  return tally;
}

Setup timeIsOver(std::vector<CommandTally> tallies) {
  return [=](Observations& seen) {
    seen.timeLimit = std::chrono::milliseconds(2500);
    seen.driver.isCutOff = true;
    seen.driver.commands = tallies;
  };
}

TEST(CommandSource, TheTimeWasOver) {
  const char kFirmware[] = "IPMI.VEL|06 01|byte 5|decimal";
  const char kTamber[] = "TamberCommand.VEL|01 F1 F1 0F|bytes 3-|text";
  const char kNotAsked[] = "unanswered: not asked: the time of 2.5 s was over";
  const CommandTally answered = dot("04 03 05 07", 1, 0);
  const CommandTally underWay = cut(dot("04 03 05 07", 1, 1), 0);
  const CommandTally unsent = cut(dot("04 03 05 07", 0, 0), 2);
  const Row rows[] = {
      {"under way",
       {kLevel},
       timeIsOver({underWay}),
       "unanswered: command 04 03 05 07 was not answered when the time of 2.5 s was over"},
      {"not sent", {kLevel}, timeIsOver({unsent}), kNotAsked},
      {"refused before, not sent again",
       {kLevel},
       timeIsOver({cut(dot("04 03 05 07", 1, 1), 1)}),
       kNotAsked},
      {"another SP answered",
       {kLevel},
       timeIsOver({answered, cut(dot("04 03 05 07", 0, 0, 1), 1)}),
       kNotAsked},
      {"one component of many",
       {kDimm},
       timeIsOver({dot("04 03 05 0B 01", 1, 0), cut(dot("04 03 05 0B 02", 0, 0), 1)}),
       kNotAsked},
      {"answered before",
       {kLevel},
       timeIsOver({answered, cut(dot("04 03 05 02 01", 0, 0), 1)}),
       "looked: what was asked of it was answered, and named none"},
      {"nobody came to ask it", {kBoot}, timeIsOver({underWay}), kNotAsked},
      {"the SP was not asked this, as it was not asked that",
       {kBoot},
       timeIsOver({dot("04 03 05 06 01", 1, 0, 0), dot("04 03 05 06 02", 1, 0, 0),
                   cut(dot("04 03 05 06 01", 0, 0, 1), 1)}),
       kNotAsked},
      {"a command without data", {kTamber}, timeIsOver({cut(tamber(1), 1)}), kNotAsked},
      {"the BMC under way",
       {kFirmware},
       timeIsOver({cut(
           {Kind::kIpmiCommand, 0, bytesOfHex("01 20 06 00 01 00 00 00 00"), 1, 1, false, {}}, 0)}),
       "unanswered: command 06 01 was not answered when the time of 2.5 s was over"},
      {"the BMC could not be looked for", {kFirmware}, timeIsOver({}), kNotAsked},
      {"there is no BMC",
       {kFirmware},
       [](Observations& seen) {
         seen.driver.isCutOff = true;
         seen.driver.hasBmc = false;
       },
       "none: this machine has no BMC"},
      {"there is no SP",
       {kLevel},
       [](Observations& seen) {
         seen.driver.isCutOff = true;
         seen.driver.isDotCommand = false;
       },
       "none: no SP speaks dot commands"},
  };
  for (const Row& row : rows) check(row);
}

TEST(CommandSource, EachCommandOfTheTimeThatWasOver) {
  Observations seen;
  timeIsOver({dot("04 03 05 0B 01", 1, 0), cut(dot("04 03 05 0B 02", 1, 1), 0),
              cut(dot("04 03 05 0B 03", 0, 0), 1)})(seen);
  const Origin dimm = originOf(kDimm);
  EXPECT_EQ((std::vector<std::string>{
                "command 04 03 05 0B 02 was not answered when the time of 2.5 s was over",
                "command 04 03 05 0B 03 was not sent: the time of 2.5 s was over"}),
            refusedCommands(std::span(&dimm, 1), seen));
}

TEST(CommandSource, TamberCommands) {
  const char kBuild[] = "TamberCommand.VEL|01 F1 F1 0F|bytes 3-|text";
  const Row rows[] = {
      {"nobody asked anything", {kBuild}, {}, "not looked"},
      {"another kind of machine",
       {kBuild},
       [](Observations& seen) { seen.driver.isTamber = false; },
       "none: no SP is of the Tamber family"},
      {"kept by another library",
       {kBuild},
       [](Observations& seen) {
         seen.driver.isTamber = true;
         seen.driver.hasTvmLibrary = true;
       },
       "unreadable: the Torvik Management Processor library keeps the service processor to itself"},
      {"refused", {kBuild}, sends({tamber(1)}), "unanswered: command 01 F1 F1 0F was refused once"},
      {"answered although the library is there",
       {kBuild},
       [](Observations& seen) {
         seen.driver.hasTvmLibrary = true;
         seen.driver.commands = {tamber(0)};
       },
       "looked: what was asked of it was answered, and named none"},
  };
  for (const Row& row : rows) check(row);
}

TEST(CommandSource, Ipmi) {
  const char kAny[] = "IPMI.VEL|06 52|bytes 9-|level";
  const char kWithData[] = "IPMI.VEL|06 52|data F5 68|bytes 9-|level";
  const char kOtherData[] = "IPMI.VEL|06 52|data F5 69|bytes 9-|level";
  const auto silence = [](Observations& seen) {
    seen.silence = {"/dev/ipmi0", std::chrono::milliseconds(5000)};
  };
  const Row rows[] = {
      {"nobody asked anything", {kAny}, {}, "not looked"},
      {"good",
       {kWithData},
       sends({ipmi("01 20 07 00 00 31")}),
       "looked: what was asked of it was answered, and named none"},
      {"other data", {kOtherData}, sends({ipmi("01 20 07 00 00 31")}), "not looked"},
      {"completion code",
       {kAny},
       sends({ipmi("01 20 07 00 C1")}),
       "unanswered: the BMC refused command 06 52 with completion code C1"},
      {"send failed",
       {kAny},
       sends({ipmi("")}),
       "unanswered: the BMC did not answer command 06 52"},
      {"asked again for fewer bytes",
       {kAny},
       sends({ipmi("01 20 07 00 CA"), ipmi("01 20 07 00 00 31")}),
       "looked: what was asked of it was answered, and named none"},
      {"asked for fewer bytes in vain",
       {kAny},
       sends({ipmi("01 20 07 00 CA")}),
       "unanswered: the BMC refused command 06 52 with completion code CA"},
      {"never asked, as the BMC was silent before",
       {"IPMI.FRU|board area|field 4|typed text"},
       sends({ipmi("")}),
       "unanswered: command 0A 11 was not sent after the BMC did not answer command 06 52"},
      {"the same, and it looks as if there were none",
       {"IPMI.FRU|board area|field 4|typed text"},
       [](Observations& seen) {
         seen.driver.hasBmc = false;
         seen.driver.commands = {ipmi("")};
       },
       "unanswered: command 0A 11 was not sent after the BMC did not answer command 06 52"},
      {"never asked, and another function was refused",
       {"IPMI.FRU|board area|field 4|typed text"},
       sends({ipmi("01 20 07 00 C1")}),
       "not looked"},
      {"no driver in the system",
       {kAny},
       [](Observations& seen) { seen.driver.hasIpmiDrivers = false; },
       "none: the system has no IPMI driver"},
      {"no BMC",
       {kAny},
       [](Observations& seen) { seen.driver.hasBmc = false; },
       "none: this machine has no BMC"},
      {"no device",
       {kAny},
       [](Observations& seen) { seen.hasIpmiDevice = false; },
       "none: there is no IPMI device; where there is a BMC, load the kernel's ipmi_devintf"},
      {"no permission",
       {kAny},
       [](Observations& seen) {
         seen.hasIpmiDevice = false;
         seen.refused.ipmi = {"/dev/ipmi0: Permission denied", true};
       },
       "forbidden: /dev/ipmi0: Permission denied; run velhost as root"},
      {"silent",
       {kAny},
       silence,
       "unanswered: the BMC behind /dev/ipmi0 did not answer within 5.0 s, what it knows is "
       "missing; "
       "ask again when it is up, or reset it with ipmitool mc reset cold"},
  };
  for (const Row& row : rows) check(row);
}

// A record too short to have a command, and a reply too short to have a completion code.
TEST(CommandSource, ShortRecordsAreNoCommandOfAnyLine) {
  const Origin origin = originOf("IPMI.VEL|06 52|bytes 9-|level");
  EXPECT_FALSE(isOf(origin, {Kind::kIpmiCommand, 0, bytesOfHex("01200600"), 1, 0, true, {}}));
  EXPECT_TRUE(isGood({Kind::kIpmiCommand, 0, {}, 1, 0, true, bytesOfHex("01200700")}));
  EXPECT_FALSE(isOf(originOf("Constant.VEL|x"), dot("04", 1, 0)));
}

}  // namespace
}  // namespace velhost
