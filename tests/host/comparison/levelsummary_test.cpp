// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/levelsummary.h"

#include <gtest/gtest.h>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

using Lines = std::vector<std::string>;
using Instances = std::vector<PropertyList>;

std::string holdersText(const Holders& holders) {
  std::string text =
      std::to_string(holders.machines) + " with " + std::to_string(holders.instances) + ':';
  for (const Holder& holder : holders.named) {
    text += ' ' + holder.label;
    for (const auto node : holder.nodes) text += '/' + std::to_string(node);
  }
  return text;
}

// A line an element, one a level, one for what is not told.
Lines linesOf(const LevelSummary& summary) {
  Lines lines;
  for (const ElementLevels& element : summary.elements) {
    lines.push_back(element.model + " | " + element.className + " | " + element.name);
    for (const Level& level : element.levels) {
      lines.push_back((level.isOdd ? "  odd " : "  ") + level.version + '-' + level.build + ", " +
                      holdersText(level.holders));
    }
  }
  for (const UntoldLevels& untold : summary.untold) {
    lines.push_back(untold.model + " | " + untold.className + " | " +
                    std::string(stateName(untold.state)) + ", " + holdersText(untold.holders));
  }
  return lines;
}

PropertyList level(std::uint8_t node, const char* name, const char* version, const char* build,
                   const char* model) {
  return {{"SourceNode", TCIMValue(node)},
          {"Name", TCIMValue(name)},
          {"Version", TCIMValue(version)},
          {"BuildNumber", TCIMValue(build)},
          {"MachineTypeModel", TCIMValue(model)}};
}

Findings server(const char* name, const Instances& instances, State state = State::kPresent,
                const char* reason = "") {
  Findings findings;
  findings.context.machineName = name;
  addClass(findings, "KRXSG_SystemBIOSElement", state, reason, instances);
  return findings;
}

Findings serverWith(const char* name, const char* version) {
  return server(name, {level(1, "UEFI", version, "B", "5020AC1")});
}

LevelSummary summaryOf(const std::vector<Findings>& machines) {
  LevelCounter counter;
  for (const Findings& findings : machines) {
    counter.add(findings, findings.context.machineName + ".json");
  }
  return counter.summary();
}

TEST(LevelSummaryTest, OfNothing) {
  EXPECT_EQ(0U, summaryOf({}).machines);
  EXPECT_EQ(Lines{}, linesOf(summaryOf({})));
}

TEST(LevelSummaryTest, TellsTheOddOnes) {
  const struct {
    const char* what;
    std::vector<Findings> machines;
    Lines lines;
  } cases[] = {
      {"one machine", {serverWith("a", "1")}, {"  1-B, 1 with 1: a/1"}},
      {"all alike", {serverWith("a", "1"), serverWith("b", "1")}, {"  1-B, 2 with 2: a/1 b/1"}},
      {"one is odd",
       {serverWith("a", "1"), serverWith("b", "2"), serverWith("c", "2")},
       {"  2-B, 2 with 2: b/1 c/1", "  odd 1-B, 1 with 1: a/1"}},
      {"as many of both: nobody is odd",
       {serverWith("a", "1"), serverWith("b", "2")},
       {"  1-B, 1 with 1: a/1", "  2-B, 1 with 1: b/1"}},
      {"no level is not odd, and no other is for it",
       {server("a", {level(1, "UEFI", " ", "", "5020AC1")}),
        server("b", {level(1, "UEFI", "", " ", "5020AC1")}), serverWith("c", "1")},
       {"  -, 2 with 2: a/1 b/1", "  1-B, 1 with 1: c/1"}},
      {"nodes of one machine",
       {server("a", {level(1, "Node 1 : UEFI", "1", "B", "5020AC1"),
                     level(2, "Node 2 : UEFI", "2", "B", "5020AC1"),
                     level(3, "Node 3 : UEFI", "1", "B", "5020AC1")}),
        serverWith("b", "1")},
       {"  1-B, 2 with 3: a/1/3 b/1", "  odd 2-B, 1 with 1: a/2"}},
  };
  for (const auto& c : cases) {
    Lines lines{"5020AC1 | KRXSG_SystemBIOSElement | UEFI"};
    lines.insert(lines.end(), c.lines.begin(), c.lines.end());
    EXPECT_EQ(lines, linesOf(summaryOf(c.machines))) << c.what;
  }
}

TEST(LevelSummaryTest, GroupsByModelClassAndName) {
  Findings sold = serverWith("c", "3");
  addClass(sold, "KRXSG_ComputerSystem", State::kPresent, "",
           {{{"Name", TCIMValue("System")}, {"ProductName", TCIMValue("R220 ")}}});
  EXPECT_EQ(
      (Lines{" | KRXSG_SystemBIOSElement | UEFI", "  2-B, 1 with 1: b/1",
             "5020AC1 | KRXSG_SystemBIOSElement | System BIOS", "  1-B, 1 with 1: d/1",
             "5020AC1 | KRXSG_SystemBIOSElement | UEFI", "  1-B, 1 with 1: a/1",
             "R220 | KRXSG_ComputerSystem | System", "  -, 1 with 1: c",
             "R220 | KRXSG_SystemBIOSElement | UEFI", "  3-B, 1 with 1: c/1"}),
      linesOf(summaryOf({serverWith("a", "1"), server("b", {level(1, "UEFI", "2", "B", " ")}), sold,
                         server("d", {level(1, "System BIOS", "1", "B", "5020AC1")})})));
}

TEST(LevelSummaryTest, CountsWhatIsNotTold) {
  Findings fixed;
  fixed.context.machineName = "c";
  addClass(fixed, "KRXSG_cKVM", State::kPartial, "1.3.11.37 is a fixed value: the BMC did not",
           {{{"SoftwareElementID", TCIMValue("cKVM")}, {"Version", TCIMValue("1.3.11.37")}}});
  Findings withoutLevels;
  addClass(withoutLevels, "KRXSG_Vpd", State::kUnanswered, "no SP answers", {});
  EXPECT_EQ(
      (Lines{" | KRXSG_SystemBIOSElement | unanswered, 2 with 0: a b",
             " | KRXSG_SystemBIOSElement | unreadable, 1 with 0: d",
             " | KRXSG_cKVM | partial, 1 with 0: c"}),
      linesOf(summaryOf({server("a", {}, State::kUnanswered), server("b", {}, State::kUnanswered),
                         server("d", {}, State::kUnreadable), fixed, withoutLevels,
                         server("e", {}, State::kAbsent)})));
}

// Somebody else's class that the schema lacks has a level where an instance has one.
TEST(LevelSummaryTest, OfAClassThatTheSchemaLacks) {
  Findings findings;
  findings.context.machineName = "a";
  addClass(
      findings, "MINE_Fan", State::kPresent, "",
      {{{"Name", TCIMValue("fan")}, {"Version", TCIMValue("7")}}, {{"Name", TCIMValue("belt")}}});
  EXPECT_EQ((Lines{" | MINE_Fan | fan", "  7-, 1 with 1: a"}), linesOf(summaryOf({findings})));
}

TEST(LevelSummaryTest, MachinesOfOneNameAreToldByTheirFiles) {
  LevelCounter counter;
  counter.add(serverWith("a", "1"), "monday.json");
  counter.add(serverWith("a", "1"), "friday.json");
  counter.add(serverWith("", "1"), "x.json");
  counter.add(serverWith("b", "1"), "b.json");
  EXPECT_EQ((Lines{"5020AC1 | KRXSG_SystemBIOSElement | UEFI",
                   "  1-B, 4 with 4: a (monday.json)/1 a (friday.json)/1 (x.json)/1 b/1"}),
            linesOf(counter.summary()));
}

// However many there are, and whatever they say.
TEST(LevelSummaryTest, NamesTheFirstAndKeepsTextsShort) {
  LevelCounter counter;
  const std::string large(20'000, 'x');
  for (int i = 0; i < 1000; ++i) counter.add(serverWith(large.c_str(), large.c_str()), "f");
  const LevelSummary summary = counter.summary();
  EXPECT_EQ(1000U, summary.machines);
  ASSERT_EQ(1U, summary.elements.size());
  const Level& only = summary.elements[0].levels.at(0);
  EXPECT_EQ(1000U, only.holders.machines);
  EXPECT_EQ(kMostHolders, only.holders.named.size());
  EXPECT_EQ(256U, only.version.size());
  EXPECT_EQ(256U, only.holders.named[0].machine.size());
}

TEST(LevelSummaryTest, LabelsOfNodesAreTakenOffNames) {
  const struct {
    const char* name;
    const char* element;
  } cases[] = {
      {"Node 2 : UEFI", "UEFI"},      {"Node 12: DIMM 1", "DIMM 1"},  {"Node 2 : ", ""},
      {"Node 2", "Node 2"},           {"Node : UEFI", "Node : UEFI"}, {"Nodes 2: x", "Nodes 2: x"},
      {"Node 2 UEFI", "Node 2 UEFI"}, {" USB TAPE x", "USB TAPE x"},  {"a\x1B[31m", "a\\x1b[31m"},
  };
  for (const auto& c : cases) {
    const LevelSummary summary = summaryOf({server("a", {level(1, c.name, "1", "", "")})});
    EXPECT_EQ(c.element, summary.elements.at(0).name) << c.name;
  }
}

}  // namespace
}  // namespace velhost
