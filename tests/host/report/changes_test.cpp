// SPDX-License-Identifier: Apache-2.0
#include "host/report/changes.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

ToldMachine told(const std::vector<PropertyList>& instances, const char* className = "KRXSG_Vpd") {
  return {findingsWith(className, instances), "a.json"};
}

// The table's rows as text: cells with " | " between them, a line a row.
std::string rowsText(const ToldMachine& before, const ToldMachine& after) {
  std::string text = changesSection(before, after).markup();
  text = std::regex_replace(text, std::regex("\n"), "");
  text = std::regex_replace(text, std::regex("</tr>"), "\n");
  text = std::regex_replace(text, std::regex("</th><td>|</td><td>|</th><th[^>]*>"), " | ");
  return std::regex_replace(text, std::regex("<[^>]*>"), "");
}

constexpr char kHead[] =
    "What changedWhat | Before: a servera.json | After: a servera.json\n"
    "Vital product data of a component\n";

TEST(Changes, EachHasARowWithWhatWasAndWhatIs) {
  const struct {
    const char* what;
    std::vector<PropertyList> before, after;
    const char* rows;
  } cases[] = {
      {"a value",
       {dimm("Node 1: DIMM 1", "1", "A")},
       {dimm("Node 1: DIMM 1", "1", "B")},
       "Node 1: DIMM 1 Location | A | B\n"},
      {"what came and went",
       {dimm("DIMM 1", "1"), dimm("DIMM 2", "2")},
       {dimm("DIMM 1", "1"), dimm("DIMM 3", "3")},
       "DIMM 2 | PartNumber R4G72, SerialNumber 2 | \u2212 gone\n"
       "DIMM 3 | + new | PartNumber R4G72, SerialNumber 3\n"},
      {"a unit in another place",
       {dimm("DIMM 1", "1")},
       {dimm("DIMM 2", "1")},
       "PartNumber R4G72, SerialNumber 1\u2192 moved | DIMM 1 | DIMM 2\n"},
      {"markup",
       {dimm("<b>", "<i>")},
       {dimm("<b>", "&")},
       "&lt;b&gt; SerialNumber | &lt;i&gt; | &amp;\n"},
      {"blank",
       {{{"Name", TCIMValue("DIMM 1")}, {"Vendor", TCIMValue("KRX")}}},
       {{{"Name", TCIMValue("DIMM 1")}, {"Vendor", TCIMValue(" ")}}},
       "DIMM 1 Vendor | KRX | blank\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(std::string(kHead) + c.rows, rowsText(told(c.before), told(c.after))) << c.what;
  }
}

TEST(Changes, NothingIsSaidInAWord) {
  const ToldMachine machine = told({dimm("DIMM 1", "1")});
  EXPECT_EQ("What changedNothing is different.", rowsText(machine, machine));
}

TEST(Changes, WhatDidNotAnswerIsNotGone) {
  ToldMachine after;
  after.file = "b.json";
  addClass(after.findings, "KRXSG_Vpd", State::kUnanswered, "the SP is silent", {});
  const std::string rows = rowsText(told({dimm("DIMM 1", "1")}), after);
  EXPECT_NE(std::string::npos,
            rows.find("state; instances are not compared | present  | unanswered the SP is silent"))
      << rows;
  EXPECT_EQ(std::string::npos, rows.find("gone")) << rows;
}

}  // namespace
}  // namespace velhost
