// SPDX-License-Identifier: Apache-2.0
#include "host/progress/knowncommands.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velhost {
namespace {

using NKRXVEL20::host::SchemaFile;
using NKRXVEL20::host::TrafficEntry;
using Kind = TrafficEntry::Kind;

const std::vector<KnownCommand>& shipped() {
  static const auto commands = knownCommands(*NKRXVEL20::host::currentSchema());
  return commands;
}

TrafficEntry entryOf(Kind kind, const char* command) {
  TrafficEntry entry;
  entry.kind = kind;
  entry.command = bytesOfHex(command);
  return entry;
}

TEST(KnownCommands, HaveWords) {
  const struct {
    Kind kind;
    const char* command;
    const char* words;
  } cases[] = {
      {Kind::kDotCommand, "04 03 05 06 01", "main firmware of a service processor"},
      {Kind::kDotCommand, "04 03 05 06 02", "boot-ROM firmware of a service processor"},
      {Kind::kDotCommand, "04 03 05 07", "hardware revision level of a service processor"},
      {Kind::kDotCommand, "04 03 05 01 01", "Diagnostics"},
      {Kind::kDotCommand, "04 03 05 01", "system BIOS or UEFI firmware, by node"},
      {Kind::kDotCommand, "04 03 05 0B 0C", "DIMM"},
      {Kind::kDotCommand, "04 03 05 0C 01", "Power Supply"},
      {Kind::kDotCommand, "04 03 05 0D 01", "Power BackPlane"},
      {Kind::kDotCommand, "04 03 05 03 01", "Processor Card"},
      {Kind::kDotCommand, "04 03 05 0E 02", "DASD BackPlane"},
      {Kind::kDotCommand, "04 03 05 02 01", "Planar"},
      {Kind::kDotCommand, "", nullptr},
      {Kind::kDotCommand, "04 03 05 0B", nullptr},
      {Kind::kDotCommand, "04 03 05 0B 0C 01", nullptr},
      {Kind::kDotCommand, "04 03 05 08", nullptr},
      {Kind::kTamberCommand, "01 F1 F1 0F", "main firmware of a service processor"},
      {Kind::kTamberCommand, "04 03 05 07", nullptr},
      {Kind::kIpmiCommand, "01 20 06 00 01 00 00 00 00",
       "management controller that IPMI commands are sent to"},
      {Kind::kIpmiCommand, "01 20 0A 00 11 00 00 00 00",
       "field-replaceable unit known through IPMI"},
      {Kind::kIpmiCommand, "01 20 06 00", nullptr},
  };
  for (const auto& c : cases) {
    const KnownCommand* const known = findCommand(shipped(), entryOf(c.kind, c.command));
    ASSERT_EQ(c.words == nullptr, known == nullptr) << c.command;
    if (known != nullptr) {
      EXPECT_EQ(c.words, known->words) << c.command;
    }
  }
}

TEST(KnownCommands, EachStandsOnceWithItsProviders) {
  for (const KnownCommand& known : shipped()) {
    const auto same = [&](const KnownCommand& other) {
      return other.kind == known.kind && other.command == known.command &&
             other.isNumbered == known.isNumbered;
    };
    EXPECT_EQ(1, std::ranges::count_if(shipped(), same)) << known.words;
    EXPECT_FALSE(known.providers.empty()) << known.words;
  }
}

// Somebody else's classes count like all others, and what they say is no terminal's to obey.
TEST(KnownCommands, OfAnySchema) {
  const SchemaFile file{"fan.mof", R"(
    Qualifier Key : boolean = false, Scope(property);
    Qualifier Description : string = null, Scope(class, property);
    Qualifier Provider : string = null, Scope(class);
    Qualifier MappingStrings : string[], Scope(class, property);
    [Description("BMC's fan "  "\x1B"), Provider("Fans")]
    class MINE_Fan {
      [Key, MappingStrings { "IPMI.VEL|30 0A|byte 5|decimal" }] string Name;
      [MappingStrings { "DotCommand.VEL|0A 0B 0C 0D n|byte 0|decimal|when Name has Fan" }] string Level;
      [MappingStrings { "Nothing.MINE|whatever" }] string Other;
    };)"};
  const auto schema = NKRXVEL20::host::parseSchema(std::span(&file, 1));
  const auto commands = knownCommands(*schema);
  ASSERT_EQ(2U, commands.size());
  EXPECT_EQ("BMC's fan \\x1b", commands[0].words);
  EXPECT_EQ("Fan", commands[1].words);
  EXPECT_EQ(std::set<std::string>{"Fans"}, commands[1].providers);
  EXPECT_EQ(7U, componentNumber(entryOf(Kind::kDotCommand, "0A 0B 0C 0D 07")));
  EXPECT_EQ(0U, componentNumber(entryOf(Kind::kDotCommand, "")));
}

}  // namespace
}  // namespace velhost
