// SPDX-License-Identifier: Apache-2.0
//
// Two documents that say they are answers of this program, "before" and "after" of one JSON text. Each is
// refused with the place, or taken: it is like itself, both differ in either direction or in none, what came
// in one is what went in the other, every text made of them is what its format says, and written as an
// inventory they read back as what they were.
#include <algorithm>
#include <optional>

#include "host/comparison/comparison.h"
#include "host/comparison/diffjson.h"
#include "host/comparison/difftable.h"
#include "host/comparison/summarytext.h"
#include "host/formats/inventory.h"
#include "host/report/reportpage.h"
#include "host/results/documentreading.h"
#include "tests/fuzz/askedmachine.h"
#include "tests/fuzz/outputchecks.h"
#include "tests/fuzz/require.h"

namespace {

using namespace velhost;
using namespace fuzz;

// As the program tells documents apart; nullopt: it is none of them.
std::optional<Findings> read(const Json& document) {
  const auto format = document.find("format");
  if (format == document.end()) {
    const bool isPlain = std::ranges::all_of(document, &Json::is_array);
    return isPlain ? std::optional(plainFindings(document, "plain.json")) : std::nullopt;
  }
  if (*format == kResultFormat) return resultFindings(document);
  return *format == kInventoryFormat ? std::optional(inventoryFindings(document)) : std::nullopt;
}

std::optional<Findings> findingsOf(const Json& pair, const char* key) {
  if (!pair.is_object() || !pair.contains(key) || !pair[key].is_object()) return std::nullopt;
  try {
    return read(pair[key]);
  } catch (const DocumentError& error) {
    require(std::string_view(error.what()).starts_with(' '), "a refusal tells the place");
    return std::nullopt;
  }
}

void checkAlone(const Findings& findings) {
  require(!compared(findings, findings).isDifferent(), "a document is like itself");
  if (!findings.tellsStates) return;
  const std::string text = inventoryText(findings.context, findings.result);
  requireJson("the inventory", text);
  const Findings again = inventoryFindings(parseDocument(text));
  require(!compared(findings, again).isDifferent(), "an inventory reads back");
}

struct Counts {
  std::size_t came = 0;
  std::size_t went = 0;
  std::size_t changed = 0;
  std::size_t moved = 0;

  bool operator==(const Counts&) const = default;
};

Counts countsOf(const Comparison& comparison) {
  Counts counts;
  for (const ClassComparison& row : comparison.classes) {
    counts.came += row.came.size();
    counts.went += row.went.size();
    counts.changed += row.changed.size();
    counts.moved += row.moved.size();
  }
  return counts;
}

void checkDifference(const Findings& before, const Findings& after) {
  const Comparison there = compared(before, after);
  const Comparison back = compared(after, before);
  require(there.isDifferent() == back.isDifferent(), "a difference is one in either direction");
  const auto [came, went, changed, moved] = countsOf(there);
  require(countsOf(back) == Counts{went, came, changed, moved},
          "what came in one went in the other");
  const ComparedFile old{"before.json", before};
  const ComparedFile now{"after.json", after};
  requireJson("the difference", differenceJson(old, now, there));
  for (const std::size_t width : {40U, 80U, 132U}) {
    requireTable("the difference", differenceTable(old, now, there, width), width);
  }
}

void checkTogether(const Findings& before, const Findings& after) {
  LevelCounter counter;
  ReportPage page;
  for (const Findings* findings : {&before, &after}) {
    counter.add(*findings, "a.json");
    page.add(*findings, "a.json");
  }
  const LevelSummary summary = counter.summary();
  require(summary.machines == 2, "both machines are counted");
  requireTable("the summary", summaryTable(summary, 0, 80), 80);
  requireJson("the summary", summaryJson(summary, 0));
  requireCsv(summaryCsv(summary));
  requireHtml(page.text());
}

void check(const Json& pair) {
  const auto before = findingsOf(pair, "before");
  const auto after = findingsOf(pair, "after");
  if (before) checkAlone(*before);
  if (after) checkAlone(*after);
  if (!before || !after) return;
  checkDifference(*before, *after);
  checkTogether(*before, *after);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  useSchema();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    check(parseDocument(textOf(data, size)));
  } catch (const DocumentError& error) {
    require(isClean(error.what()), "a refusal is clean");
  }
  return 0;
}
