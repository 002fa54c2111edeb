// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/difftable.h"

#include <gtest/gtest.h>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

constexpr char kHead[] = "Old  a server (old.json)\nNew  a server (new.json)\n\n";

std::string table(const Findings& before, const Findings& after) {
  const std::string text =
      differenceTable({"old.json", before}, {"new.json", after}, compared(before, after), 80);
  EXPECT_TRUE(text.starts_with(kHead)) << text;
  return text.substr(std::string(kHead).size());
}

// One element's property, before and after.
std::string levelChange(const char* property, const char* before, const char* after) {
  const auto findings = [&](const char* value) {
    PropertyList properties = {{"SourceNode", TCIMValue(std::uint8_t{1})},
                               {"Name", TCIMValue("UEFI")}};
    if (value != nullptr) properties.emplace_back(property, TCIMValue(value));
    return findingsWith("KRXSG_SystemBIOSElement", {properties});
  };
  return table(findings(before), findings(after));
}

TEST(DiffTable, NothingIsDifferent) {
  const Findings same = findingsWith("KRXSG_SystemBIOSElement", {bios(1, "1")});
  EXPECT_EQ("No differences.\n", table(same, same));
}

TEST(DiffTable, AValueStandsBeforeAndAfterTheArrow) {
  const std::string head = "KRXSG_SystemBIOSElement\n  changed  UEFI\n";
  const struct {
    const char* what;
    const char* before;
    const char* after;
    const char* line;
  } cases[] = {
      {"another one", "1.08", "1.09", "    Version  1.08 -> 1.09\n"},
      {"set", nullptr, "1.09", "    Version  (not set) -> \"1.09\"\n"},
      {"not set any more", "1.08", nullptr, "    Version  \"1.08\" -> (not set)\n"},
      {"nothing in it", "1.08", "", "    Version  1.08 -> (blank)\n"},
      {"set to nothing", nullptr, "", "    Version  (not set) -> (blank)\n"},
      {"blanks that make a difference", "1.08", "1.08 ", "    Version  \"1.08\" -> \"1.08 \"\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(head + c.line + "\n1 changed.\n", levelChange("Version", c.before, c.after))
        << c.what;
  }
}

// 40 characters stand before the difference, 157 from there on behind the three points.
TEST(DiffTable, OfALongValueItsFirstDifferenceIsShown) {
  const std::string before = std::string(100, 'a') + "1" + std::string(100, 'b');
  const std::string after = std::string(100, 'a') + "2" + std::string(100, 'b');
  const std::string text = levelChange("Version", before.c_str(), after.c_str());
  std::string shown;
  for (const char c : text) {
    if (c != ' ' && c != '\n') shown += c;
  }
  const std::string left(40, 'a');
  const std::string right(100, 'b');
  EXPECT_EQ("KRXSG_SystemBIOSElementchangedUEFIVersion..." + left + "1" + right + "->..." + left +
                "2" + right + "1changed.",
            shown);
}

// Three points stand for the middle of a name that would leave the values no room: of 40 columns it
// has 20.
TEST(DiffTable, ALongNameLeavesANarrowScreenRoomForTheValues) {
  const auto findings = [](const char* value) {
    return findingsWith("KRXSG_SystemBIOSElement", {{{"SourceNode", TCIMValue(std::uint8_t{1})},
                                                     {"Name", TCIMValue("UEFI")},
                                                     {std::string(32, 'n'), TCIMValue(value)}}});
  };
  const Findings before = findings("1.08");
  const Findings after = findings("1.09");
  const std::string text =
      differenceTable({"old.json", before}, {"new.json", after}, compared(before, after), 40);
  EXPECT_NE(std::string::npos, text.find("\n    nnnnnnnnn...nnnnnnnn  1.08 -> 1.09\n")) << text;
}

TEST(DiffTable, WhatCameWentAndMoved) {
  Findings before = findingsWith("KRXSG_Vpd", {dimm("DIMM 1", "A"), dimm("DIMM 3", "C")});
  Findings after = findingsWith("KRXSG_Vpd", {dimm("DIMM 2", "A"), dimm("DIMM 4", "D")});
  addClass(before, "KRXSG_SystemBIOSElement", State::kPresent, "", {bios(1, "1")});
  addClass(after, "KRXSG_SystemBIOSElement", State::kPresent, "", {bios(2, "2")});
  EXPECT_EQ(
      "KRXSG_Vpd\n"
      "  moved    DIMM 1 -> DIMM 2\n"
      "  went     DIMM 3: part R4G72, serial C\n"
      "  came     DIMM 4: part R4G72, serial D\n"
      "\n"
      "KRXSG_SystemBIOSElement\n"
      "  went     Node 1 : UEFI: 1\n"
      "  came     Node 2 : UEFI: 2\n"
      "\n"
      "1 moved, 2 went, 2 came.\n",
      table(before, after));
}

TEST(DiffTable, StatesAreToldWhereTheyAreTheDifference) {
  Findings before = findingsWith("KRXSG_cKVM", {});
  Findings after;
  after.context.machineName = "a server";
  addClass(after, "KRXSG_cKVM", State::kUnanswered, "the BMC is silent", {});
  EXPECT_EQ(
      "KRXSG_cKVM\n"
      "  old  absent\n"
      "  new  unanswered: the BMC is silent\n"
      "\n"
      "1 class in another state.\n",
      table(before, after));
  addClass(before, "KRXSG_SystemBIOSElement", State::kPresent, "", {bios(1, "1")});
  addClass(after, "KRXSG_SystemBIOSElement", State::kPartial, "a string is missing",
           {bios(1, "2"), bios(2, "2")});
  EXPECT_EQ(
      "KRXSG_cKVM\n"
      "  old  absent\n"
      "  new  unanswered: the BMC is silent\n"
      "\n"
      "KRXSG_SystemBIOSElement\n"
      "  old  present, 1 instance\n"
      "  new  partial, 2 instances: a string is missing\n"
      "  changed  Node 1 : UEFI\n"
      "    Version  1 -> 2\n"
      "  came     Node 2 : UEFI: 2\n"
      "\n"
      "1 changed, 1 came; 2 classes in another state.\n",
      table(before, after));
}

TEST(DiffTable, AClassOfOneFileWasNotAskedForInTheOther) {
  Findings before = findingsWith("KRXSG_cKVM", {});
  addClass(before, "KRXSG_Vpd", State::kFailed, "refused", {});
  const Findings after = findingsWith("KRXSG_cKVM", {});
  EXPECT_EQ(
      "KRXSG_Vpd\n"
      "  old  failed: refused\n"
      "  new  not asked for, or none\n"
      "\n"
      "1 class in another state.\n",
      table(before, after));
}

}  // namespace
}  // namespace velhost
