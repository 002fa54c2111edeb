// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/comparison.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

using Lines = std::vector<std::string>;

std::string shown(const TCIMValue* value) {
  return value == nullptr ? "none" : '"' + value->ToString() + '"';
}

// What an instance is called in these tests: the value of its first property.
std::string nameIn(const PublishedInstance* instance) {
  return instance->properties.empty() ? "" : instance->properties.front().second.ToString();
}

void addChanges(const char* what, const std::vector<InstanceChange>& changes, Lines& lines) {
  for (const InstanceChange& change : changes) {
    lines.push_back(std::string(what) + nameIn(change.before) + " -> " + nameIn(change.after));
    for (const PropertyChange& property : change.properties) {
      lines.push_back("  " + property.name + ": " + shown(property.before) + " -> " +
                      shown(property.after));
    }
  }
}

// A line a difference; none where the class is the same.
Lines linesOf(const ClassComparison& compared) {
  Lines lines;
  if (compared.hasOtherState) lines.emplace_back("other state");
  if (!compared.isCompared) lines.emplace_back("not compared");
  addChanges("changed: ", compared.changed, lines);
  addChanges("moved: ", compared.moved, lines);
  for (const auto* one : compared.went) lines.push_back("went: " + nameIn(one));
  for (const auto* one : compared.came) lines.push_back("came: " + nameIn(one));
  return lines;
}

Lines difference(const Findings& before, const Findings& after) {
  Lines lines;
  const Comparison comparison = compared(before, after);
  for (const ClassComparison& one : comparison.classes)
    std::ranges::copy(linesOf(one), std::back_inserter(lines));
  const bool isDifferent =
      std::ranges::any_of(lines, [](const std::string& line) { return line != "not compared"; });
  EXPECT_EQ(isDifferent, comparison.isDifferent());
  return lines;
}

using Instances = std::vector<PropertyList>;

TEST(Comparison, OfInstancesWithKeys) {
  const struct {
    const char* what;
    const char* className;
    Instances before;
    Instances after;
    Lines lines;
  } cases[] = {
      {"the same",
       "KRXSG_SystemBIOSElement",
       {bios(1, "1"), bios(2, "2")},
       {bios(1, "1"), bios(2, "2")},
       {}},
      {"nothing", "KRXSG_SystemBIOSElement", {}, {}, {}},
      {"the other way round",
       "KRXSG_SystemBIOSElement",
       {bios(1, "1"), bios(2, "2")},
       {bios(2, "2"), bios(1, "1")},
       {}},
      {"a level changed",
       "KRXSG_SystemBIOSElement",
       {bios(1, "1"), bios(2, "2")},
       {bios(2, "3"), bios(1, "1")},
       {"changed: 2 -> 2", "  Version: \"2\" -> \"3\""}},
      {"one came",
       "KRXSG_SystemBIOSElement",
       {bios(1, "1")},
       {bios(1, "1"), bios(2, "1")},
       {"came: 2"}},
      {"one went",
       "KRXSG_SystemBIOSElement",
       {bios(1, "1"), bios(2, "1")},
       {bios(2, "1")},
       {"went: 1"}},
      {"properties that are set or not",
       "KRXSG_HardwareRevisionLevel",
       {{{"SourceNode", TCIMValue(std::uint8_t{1})}, {"Version", TCIMValue("1")}}},
       {{{"SourceNode", TCIMValue(std::uint8_t{1})}, {"Hardwarelevel", TCIMValue("")}}},
       {"changed: 1 -> 1", "  Version: \"1\" -> none", "  Hardwarelevel: none -> \"\""}},
      {"properties in another order",
       "KRXSG_HardwareRevisionLevel",
       {{{"SourceNode", TCIMValue(std::uint8_t{1})}, {"Version", TCIMValue("1")}}},
       {{{"Version", TCIMValue("1")}, {"SourceNode", TCIMValue(std::uint8_t{1})}}},
       {}},
      {"of equal keys those with equal values are the same",
       "KRXSG_SystemBIOSElement",
       {bios(1, "a"), bios(1, "b"), bios(1, "c")},
       {bios(1, "x"), bios(1, "c"), bios(1, "a")},
       {"changed: 1 -> 1", "  Version: \"b\" -> \"x\""}},
      {"of equal keys the others go by their order",
       "KRXSG_SystemBIOSElement",
       {bios(1, "a"), bios(1, "b"), bios(1, "c")},
       {bios(1, "d"), bios(1, "e")},
       {"changed: 1 -> 1", "  Version: \"a\" -> \"d\"", "changed: 1 -> 1",
        "  Version: \"b\" -> \"e\"", "went: 1"}},
      {"instances without properties", "KRXSG_Vpd", {{}, {}}, {{}, {}}, {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.lines,
              difference(findingsWith(c.className, c.before), findingsWith(c.className, c.after)))
        << c.what;
  }
}

TEST(Comparison, OfUnitsThatMoved) {
  const struct {
    const char* what;
    const char* className;
    Instances before;
    Instances after;
    Lines lines;
  } cases[] = {
      {"two changed places",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A"), dimm("DIMM 2", "B")},
       {dimm("DIMM 1", "B"), dimm("DIMM 2", "A")},
       {"moved: DIMM 1 -> DIMM 2", "moved: DIMM 2 -> DIMM 1"}},
      {"all went round",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A"), dimm("DIMM 2", "B"), dimm("DIMM 3", "C")},
       {dimm("DIMM 1", "C"), dimm("DIMM 2", "A"), dimm("DIMM 3", "B")},
       {"moved: DIMM 1 -> DIMM 2", "moved: DIMM 2 -> DIMM 3", "moved: DIMM 3 -> DIMM 1"}},
      {"to a place where none was",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A")},
       {dimm("DIMM 4", "A")},
       {"moved: DIMM 1 -> DIMM 4"}},
      {"to another place, and with other values of what tells none",
       "KRXSG_Vpd",
       {{{"Name", TCIMValue("DIMM 1")},
         {"PartNumber", TCIMValue("R4G72")},
         {"SerialNumber", TCIMValue("A")},
         {"FRUNumber", TCIMValue("F1")},
         {"NotInTheSchema", TCIMValue("1")}}},
       {{{"Name", TCIMValue("DIMM 4")},
         {"PartNumber", TCIMValue("R4G72")},
         {"SerialNumber", TCIMValue("A")},
         {"FRUNumber", TCIMValue("F2")},
         {"NotInTheSchema", TCIMValue("2")}}},
       {"moved: DIMM 1 -> DIMM 4", "  FRUNumber: \"F1\" -> \"F2\"",
        "  NotInTheSchema: \"1\" -> \"2\""}},
      {"another one in its place",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A")},
       {dimm("DIMM 1", "B"), dimm("DIMM 4", "A")},
       {"moved: DIMM 1 -> DIMM 4", "came: DIMM 1"}},
      {"to the place of one that went",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A"), dimm("DIMM 4", "B")},
       {dimm("DIMM 4", "A")},
       {"moved: DIMM 1 -> DIMM 4", "went: DIMM 4"}},
      {"to another node, whose label stands in the location",
       "KRXSG_Vpd",
       {dimm("Node 1: DIMM 1", "A", "Node 1: A")},
       {dimm("Node 2: DIMM 9", "A", "Node 2: A")},
       {"moved: Node 1: DIMM 1 -> Node 2: DIMM 9"}},
      {"replaced",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "A")},
       {dimm("DIMM 1", "B")},
       {"changed: DIMM 1 -> DIMM 1", "  SerialNumber: \"A\" -> \"B\""}},
      {"no serial numbers: it went and another came",
       "KRXSG_Vpd",
       {dimm("DIMM 1", " ")},
       {dimm("DIMM 2", " ")},
       {"went: DIMM 1", "came: DIMM 2"}},
      {"one serial number for all tells nothing",
       "KRXSG_Vpd",
       {dimm("DIMM 1", "0"), dimm("DIMM 2", "0")},
       {dimm("DIMM 2", "0"), dimm("DIMM 3", "0")},
       {"went: DIMM 1", "came: DIMM 3"}},
      {"slots that are told although they are empty",
       "KRXSG_PhysicalMemory",
       {slot("A1", "A"), slot("A2", "B"), slot("A3", ""), slot("A4", "")},
       {slot("A1", ""), slot("A2", "A"), slot("A3", "B"), slot("A4", "")},
       {"moved: A1 -> A2", "moved: A2 -> A3"}},
      {"an empty slot is filled",
       "KRXSG_PhysicalMemory",
       {slot("A1", "A"), slot("A2", "")},
       {slot("A1", "A"), slot("A2", "B")},
       {"changed: A2 -> A2", "  Populated: \"false\" -> \"true\"",
        "  PartNumber: none -> \"R4G72\"", "  SerialNumber: none -> \"B\""}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.lines,
              difference(findingsWith(c.className, c.before), findingsWith(c.className, c.after)))
        << c.what;
  }
}

// Of a class without keys, and of one that the schema does not have, all values count.
TEST(Comparison, OfInstancesWithoutKeys) {
  const auto fan = [](const char* name, std::uint64_t speed) {
    return PropertyList{{"Name", TCIMValue(name)}, {"Speed", TCIMValue(speed)}};
  };
  const Instances before{fan("a", 1), fan("a", 1), fan("b", 2)};
  const struct {
    const char* what;
    Instances after;
    Lines lines;
  } cases[] = {
      {"in another order", {fan("b", 2), fan("a", 1), fan("a", 1)}, {}},
      {"one of two that are equal", {fan("a", 1), fan("b", 2)}, {"went: a"}},
      {"another value", {fan("a", 1), fan("a", 1), fan("b", 3)}, {"went: b", "came: b"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.lines,
              difference(findingsWith("MINE_Fan", before), findingsWith("MINE_Fan", c.after)))
        << c.what;
  }
}

TEST(Comparison, OfStates) {
  const Instances one{bios(1, "1")};
  const auto stated = [](State state, const char* reason, const Instances& instances) {
    Findings findings;
    addClass(findings, "KRXSG_SystemBIOSElement", state, reason, instances);
    return findings;
  };
  const auto untold = [](Findings findings) {
    findings.tellsStates = false;
    return findings;
  };
  const Findings nothing;
  const Findings present = stated(State::kPresent, "", one);
  const Findings partial = stated(State::kPartial, "slot 2 is empty", one);
  const Findings absent = stated(State::kAbsent, "none", {});
  const Findings silent = stated(State::kUnanswered, "no SP answers", {});
  const struct {
    const char* what;
    Findings before;
    Findings after;
    Lines lines;
  } cases[] = {
      {"another reason", partial, stated(State::kPartial, "slot 3 is empty", one), {}},
      {"another state", present, partial, {"other state"}},
      {"what did not answer is not gone", present, silent, {"other state", "not compared"}},
      {"what answers again did not come", silent, present, {"other state", "not compared"}},
      {"silent in both",
       silent,
       stated(State::kUnanswered, "another reason", {}),
       {"not compared"}},
      {"silent and refused",
       silent,
       stated(State::kForbidden, "no permission", {}),
       {"other state", "not compared"}},
      {"gone for good", present, absent, {"other state", "went: 1"}},
      {"a file without states: present or partial", untold(present), partial, {}},
      {"a file without states: none, and it is not told why",
       untold(absent),
       silent,
       {"not compared"}},
      {"a file without states: none there", present, untold(absent), {"went: 1"}},
      {"a file without states: the request failed",
       present,
       untold(stated(State::kFailed, "the request ended", {})),
       {"other state", "not compared"}},
      {"a file without states: there are some, and now nobody answers",
       untold(present),
       silent,
       {"other state", "not compared"}},
      {"not in the one, none in the other", nothing, absent, {}},
      {"not in the one, some in the other", nothing, present, {"came: 1"}},
      {"in the one alone", present, nothing, {"went: 1"}},
      {"not in the one, silent in the other", nothing, silent, {"other state", "not compared"}},
      {"not in one without states, silent in the other", untold(nothing), silent, {"not compared"}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, difference(c.before, c.after)) << c.what;
}

// A document has U+FFFD for what is no UTF-8, a machine has the bytes.
TEST(Comparison, OfTextsThatAreNoUtf8) {
  const auto named = [](const char* text) {
    return findingsWith("KRXSG_HardwareRevisionLevel", {{{"SourceNode", TCIMValue(std::uint8_t{1})},
                                                         {"Version", TCIMValue(text)}}});
  };
  EXPECT_EQ(Lines{}, difference(named("\xFF"), named("\xEF\xBF\xBD")));
  EXPECT_EQ((Lines{"changed: 1 -> 1", "  Version: \"\xFF\" -> \"\xFE\""}),
            difference(named("\xFF"), named("\xFE")));
}

// The type that a value was read with makes no difference.
TEST(Comparison, OfTypes) {
  EXPECT_EQ(Lines{},
            difference(findingsWith("MINE_Fan", {{{"Speed", TCIMValue(std::uint8_t{7})}}}),
                       findingsWith("MINE_Fan", {{{"Speed", TCIMValue(std::uint64_t{7})}}})));
}

TEST(Comparison, CountsTheInstancesOfBoth) {
  const Comparison comparison =
      compared(findingsWith("KRXSG_Vpd", {dimm("DIMM 1", "A"), dimm("DIMM 2", "B")}),
               findingsWith("KRXSG_Vpd", {dimm("DIMM 1", "A")}));
  ASSERT_EQ(1U, comparison.classes.size());
  EXPECT_EQ(2U, comparison.classes[0].countBefore);
  EXPECT_EQ(1U, comparison.classes[0].countAfter);
}

// Classes stand in the order of before, then those that only after has.
TEST(Comparison, OfManyClassesAndNodes) {
  Findings before;
  Findings after;
  Instances nodes;
  for (int node = 0; node < 255; ++node)
    nodes.push_back(bios(static_cast<std::uint8_t>(node + 1), "1"));
  addClass(before, "KRXSG_cKVM", State::kAbsent, "", {});
  addClass(before, "KRXSG_SystemBIOSElement", State::kPresent, "", nodes);
  std::ranges::reverse(nodes);
  nodes.front() = bios(255, "2");
  addClass(after, "MINE_Fan", State::kAbsent, "", {});
  addClass(after, "KRXSG_SystemBIOSElement", State::kPresent, "", nodes);
  const Comparison comparison = compared(before, after);
  Lines names;
  for (const auto& one : comparison.classes) names.push_back(one.className);
  EXPECT_EQ((Lines{"KRXSG_cKVM", "KRXSG_SystemBIOSElement", "MINE_Fan"}), names);
  EXPECT_EQ((Lines{"changed: 255 -> 255", "  Version: \"1\" -> \"2\""}),
            linesOf(comparison.classes[1]));
}

}  // namespace
}  // namespace velhost
