// SPDX-License-Identifier: Apache-2.0
#include "host/report/levelmatrix.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

struct Told {
  const char* name;
  Findings findings;
};

Findings nodes(const std::vector<const char*>& versions) {
  std::vector<PropertyList> instances;
  for (const char* const version : versions) {
    instances.push_back(bios(static_cast<std::uint8_t>(instances.size() + 1), version));
  }
  return findingsWith("KRXSG_SystemBIOSElement", instances);
}

Findings modelled(Findings findings, const char* model) {
  addClass(findings, "KRXSG_ComputerSystem", State::kPresent, "",
           {{{"ProductName", TCIMValue(model)}}});
  return findings;
}

Findings silent() {
  Findings findings;
  addClass(findings, "KRXSG_SystemBIOSElement", State::kUnanswered, "silent", {});
  return findings;
}

// A line an odd level or a row of the table; cells with " | " between them.
std::string matrixText(const std::vector<Told>& machines) {
  LevelMatrix matrix;
  std::size_t count = 0;
  for (Told machine : machines) {
    machine.findings.context.machineName = machine.name;
    const std::string file = std::string(machine.name) + ".json";
    matrix.add(machine.findings, machineView(machine.findings, file), Anchor(++count));
  }
  std::string text = std::regex_replace(matrix.section().markup(), std::regex("\n"), "");
  text = std::regex_replace(text, std::regex("</tr>|</li>|</h2>|</p>"), "\n");
  text = std::regex_replace(text, std::regex("</t[hd]><t[hd][^>]*>|</span><span class=\"line\">"),
                            " | ");
  return std::regex_replace(text, std::regex("<[^>]*>"), "");
}

constexpr char kNoneOdd[] = "Levels\nNo machine has another level than most of its model.\n";
constexpr char kHead[] = "Machine | System BIOS or UEFI firmware, by node\n";

TEST(LevelMatrix, LevelsOfMachinesStandBesideEachOther) {
  const struct {
    const char* what;
    std::vector<Told> machines;
    std::string text;
  } cases[] = {
      {"no level at all", {{"a", findingsWith("KRXSG_Vpd", {dimm("DIMM 1", "1")})}}, ""},
      {"the same",
       {{"a", nodes({"1"})}, {"b", nodes({"1"})}},
       std::string(kNoneOdd) + kHead + "Model not told | \na a.json | 1\nb b.json | 1\n"},
      {"two that differ: which is odd cannot be told",
       {{"a", nodes({"1"})}, {"b", nodes({"2"})}},
       std::string(kNoneOdd) + kHead + "Model not told | \na a.json | 1\nb b.json | 2\n"},
      {"the odd one of three",
       {{"a", nodes({"1"})}, {"b", nodes({"<2>"})}, {"c", nodes({"1"})}},
       std::string(
           "Levels\nodd b b.json: System BIOS or UEFI firmware, by node, UEFI &lt;2&gt;; most "
           "have 1\n") +
           kHead + "Model not told | \na a.json | 1\nb b.json | odd &lt;2&gt;\nc c.json | 1\n"},
      {"another model has other levels",
       {{"a", modelled(nodes({"1"}), "M1")},
        {"b", modelled(nodes({"2"}), "M2")},
        {"c", modelled(nodes({"1"}), "M1")}},
       std::string(kNoneOdd) + kHead +
           "Model M1 | \na a.json | 1\nc c.json | 1\nModel M2 | \nb b.json | 2\n"},
      {"nodes that differ",
       {{"a", nodes({"1", "1", "1", "2", "1", "1"})}, {"b", nodes({"1", "1", "1", "1", "1", "1"})}},
       "Levels\nodd a a.json: System BIOS or UEFI firmware, by node, UEFI 2; most have 1\n" +
           std::string(kHead) +
           "Model not told | \na a.json | 1nodes 1-3, 5, 6 | odd 2node 4\nb b.json | 1\n"},
      {"no level, and why",
       {{"a", nodes({"1"})}, {"b", silent()}, {"c", findingsWith("KRXSG_Vpd", {})}},
       std::string(kNoneOdd) + kHead +
           "Model not told | \na a.json | 1\nb b.json | unanswered\nc c.json | not asked for\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, matrixText(c.machines)) << c.what;
}

}  // namespace
}  // namespace velhost
