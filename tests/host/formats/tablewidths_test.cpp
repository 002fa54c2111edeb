// SPDX-License-Identifier: Apache-2.0
//
// What holds for every table, whatever the machine, at every width.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "host/formats/tableformat.h"
#include "host/results/findings.h"
#include "host/text/displaywidth.h"
#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

// Empty: no line is wider than that.
std::string widerLine(const std::string& text, std::size_t width) {
  for (const std::string& line : linesOf(text)) {
    if (displayWidth(line) > width) return line;
  }
  return "";
}

// Named by what they are.
std::vector<Findings> machines() {
  std::vector<Findings> all;
  for (const auto& entry : std::filesystem::directory_iterator(MACHINES_DIR "/expected")) {
    all.push_back(findingsOf(entry.path(), TEST_PROVIDERS));
    all.back().context.machineName += ", " + entry.path().filename().string();
  }
  return all;
}

// As many instances as a machine of so many nodes has, with texts that try to break out.
QueryResult hostileResult(unsigned nodes) {
  const char* const texts[] = {
      "",
      " ",
      "\x1B[31m\r\n\t",
      "\xFF\xFE no text",
      "\"quotes\" <b>&amp;</b>",
      "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",  // six wide letters
      "e\xCC\x81\xCC\x81\xCC\x81",                                                 // marks
      "\xE2\x80\xAEturned round",
      "a text of several words that is longer than a column may be",
      "a-text-without-blanks-that-is-longer-than-a-column-may-be",
  };
  QueryResult result = resultOf("KRXSG_Vpd", {});
  for (unsigned node = 1; node <= nodes; ++node) {
    for (const char* const hostile : texts) {
      const std::string label = "Node " + std::to_string(node) + ": ";
      result.instances.push_back({"KRXSG_Vpd",
                                  {{"Name", TCIMValue(label + hostile)},
                                   {"PartNumber", TCIMValue(hostile)},
                                   {"Vendor", TCIMValue(std::string(hostile) + label)}}});
    }
  }
  if (nodes == 0) result.states[0] = {"KRXSG_Vpd", "", State::kFailed, texts[8]};
  return result;
}

void expectInside(const QueryContext& context, const QueryResult& result, std::size_t width) {
  for (const bool hasAll : {false, true}) {
    const std::string text =
        tableText(context, result, {.screen = {.width = width}, .hasAllProperties = hasAll});
    EXPECT_EQ("", widerLine(text, width)) << context.machineName << " at " << width;
  }
}

TEST(TableWidths, NoLineIsWiderThanTheScreen) {
  const auto all = machines();
  EXPECT_GT(all.size(), 50U);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto& [context, result, ignored] = all[i];
    const std::size_t step = result.instances.size() > 100 ? 37 : 7;  // others have the rest
    for (std::size_t width = 1 + i % 7; width <= 200; width += step) {
      expectInside(context, result, width);
    }
  }
}

TEST(TableWidths, HostileTextsStayInsideToo) {
  for (const unsigned nodes : {0U, 1U}) {
    const QueryResult result = hostileResult(nodes);
    for (std::size_t width = 1; width <= 200; ++width) expectInside(sampleContext(), result, width);
  }
  const QueryResult several = hostileResult(8);
  for (std::size_t width = 1; width <= 200; width += 9) {
    expectInside(sampleContext(), several, width);
  }
  const QueryResult many = hostileResult(255);
  for (const std::size_t width : {20U, 80U}) expectInside(sampleContext(), many, width);
}

// At most as many lines behind the head of the class as there are instances.
TEST(TableWidths, EveryComponentHasALineOfItsOwn) {
  for (const std::size_t width : {20U, 80U, 200U}) {
    for (const unsigned nodes : {1U, 8U, 255U}) {
      const QueryResult result = hostileResult(nodes);
      const auto lines = linesOf(tableText(sampleContext(), result, {.screen = {.width = width}}));
      const auto head = std::ranges::find_if(
          lines, [](const std::string& line) { return line.find("Name") != std::string::npos; });
      ASSERT_NE(lines.end(), head);
      const auto end =
          std::find_if(head, lines.end(), [](const std::string& line) { return line.empty(); });
      EXPECT_EQ(result.instances.size(), static_cast<std::size_t>(end - head - 1))
          << nodes << " nodes at " << width;
      EXPECT_EQ(0, std::count_if(head, end, [](const std::string& line) {
                  return line.find_first_not_of(' ') == std::string::npos;
                }));
    }
  }
}

TEST(TableWidths, AHugeTextIsCut) {
  const std::string huge(10'000'000, 'x');
  const QueryResult one = resultOf("KRXSG_Vpd", {{{"PartNumber", TCIMValue(huge)}}});
  for (const bool hasAll : {false, true}) {
    const std::string text = tableText(sampleContext(), one, {.hasAllProperties = hasAll});
    EXPECT_LT(text.size(), 5000U);
    EXPECT_EQ("", widerLine(text, 80));
  }
}

}  // namespace
}  // namespace velhost
