// SPDX-License-Identifier: Apache-2.0
//
// A machine file or DMI dump, as a stranger may have written it. It is refused with its name and a reason,
// or the machine is asked: every output is what its format says, what was written reads back as what
// it was, a recording answers as the machine did, and a redacted one has none of its serial numbers.
#include <algorithm>
#include <cctype>
#include <optional>
#include <set>
#include <string>

#include "host/comparison/comparison.h"
#include "host/comparison/summarytext.h"
#include "host/explanation/evidence.h"
#include "host/explanation/machineexplained.h"
#include "host/formats/csv.h"
#include "host/formats/inventory.h"
#include "host/formats/ndjson.h"
#include "host/formats/openmetrics.h"
#include "host/formats/plainjson.h"
#include "host/formats/resultdocument.h"
#include "host/formats/tableformat.h"
#include "host/formats/whytext.h"
#include "host/machine/machinewriter.h"
#include "host/report/reportpage.h"
#include "host/results/documentreading.h"
#include "host/text/utf8.h"
#include "tests/fuzz/askedmachine.h"
#include "tests/fuzz/outputchecks.h"
#include "tests/fuzz/require.h"

namespace {

using namespace velhost;
using namespace fuzz;
using NKRXVEL20::ECIMType;

constexpr char kFile[] = MACHINES_DIR "/fuzz.json";  // beside the dumps that machine files name
constexpr std::string_view kCredential = "io.systemd.credential";

std::optional<MachineFile> parsed(std::string_view text) {
  try {
    return parseMachineFile(text, kFile);
  } catch (const MachineFileError& error) {
    const std::string_view what = error.what();
    require(what.starts_with(kFile) && what.size() > sizeof kFile, "a refusal names the file");
    return std::nullopt;
  }
}

std::string traceOf(const Findings& findings) {
  ResultDocument document(findings.context);
  document.add(findings.result);
  return document.text();
}

// ---- outputs

void checkTables(const Findings& findings) {
  const auto& [context, result, tellsStates] = findings;
  requireTable("the table", tableText(context, result, {{80, false}, false}), 80);
  requireTable("the wide table", tableText(context, result, {{40, false}, true}), 40);
  requireTable("the steps", whyText(result, {132, false}), 132);
}

void checkSummary(const Findings& findings) {
  LevelCounter counter;
  counter.add(findings, "fuzz.json");
  const LevelSummary summary = counter.summary();
  requireTable("the summary", summaryTable(summary, 0, 80), 80);
  requireJson("the summary", summaryJson(summary, 0));
  requireCsv(summaryCsv(summary));
}

void checkFormats(const Findings& findings) {
  const auto& [context, result, tellsStates] = findings;
  requireJson("json", plainJson(result));
  requireJson("inventory", inventoryText(context, result));
  requireJson("trace", traceOf(findings));
  requireNdjson(ndjsonText(context, result));
  requireCsv(csvText(context, result));
  requireOpenMetrics(openMetricsText(context, result, std::nullopt));
  ReportPage page;
  page.add(findings, "fuzz.json");
  page.add(findings, "again.json");
  requireHtml(page.text());
}

// One class and one of its properties, other ones for other files.
void checkExplanation(const Findings& findings, const MachineFile& machine, std::size_t choice) {
  const auto& [context, result, tellsStates] = findings;
  const auto& name = result.requested[choice % result.requested.size()];
  const auto& cimClass = *NKRXVEL20::host::findClass(name);
  const auto* const table = machine.smbios ? &*machine.smbios : nullptr;
  const Evidence evidence = evidenceOf(result.traffic, table);
  const Inquiry inquiry{cimClass, context, result, evidence};
  requireClean("an explanation", classOnMachine(inquiry));
  const auto& property = cimClass.properties[choice % cimClass.properties.size()];
  requireClean("an explanation", propertyOnMachine(inquiry, property));
}

// ---- documents, read back

bool isText(const NKRXVEL20::host::PublishedInstance& row) {
  return std::ranges::all_of(row.properties, [](const auto& property) {
    return property.second.GetType() != ECIMType::kString || isUtf8(property.second.ToString());
  });
}

void checkDocuments(const Findings& findings) {
  require(!compared(findings, findings).isDifferent(), "a machine is like itself");
  if (!std::ranges::all_of(findings.result.instances, isText)) return;
  const auto inventory = inventoryText(findings.context, findings.result);
  require(!compared(findings, inventoryFindings(parseDocument(inventory))).isDifferent(),
          "an inventory reads back");
}

// ---- recordings

// With what stands beside the machine: its description tells of credentials that were left out.
std::string answerOf(MachineFile machine) { return traceOf(ask(std::move(machine))); }

std::string reread(const std::string& text) {
  const auto machine = parsed(text);
  require(machine.has_value(), "what was written can be read");
  return machineFileText(*machine);
}

void checkRecording(const MachineFile& machine, const std::string& answer, bool hasCredential) {
  const std::string text = machineFileText(recorded(machine, false));
  require(text.find(kCredential) == std::string::npos, "no credential is recorded");
  require(reread(text) == text, "a recording is read as it was written");
  if (hasCredential) return;
  const MachineFile again = *parsed(text);
  require(answerOf(again) == answer, "a recording answers as the machine did");
  require(machineFileText(recorded(again, false)) == text, "a recording's recording is the same");
}

// ---- redaction

// What is no chance, and no stand-in either, which are counted from 1 on.
bool isTelling(const std::string& value) {
  const std::set<char> different(value.begin(), value.end());
  return value.size() >= 6 && different.size() >= 5 &&
         std::ranges::all_of(value, [](unsigned char c) { return std::isalnum(c) || c == '-'; }) &&
         std::ranges::any_of(value, [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::set<std::string> serialNumbers(const Findings& findings) {
  std::set<std::string> values;
  for (const auto& row : findings.result.instances) {
    for (const auto& [name, value] : row.properties) {
      const std::string text = value.ToString();
      if (name.ends_with("SerialNumber") && isTelling(text)) values.insert(text);
    }
  }
  return values;
}

void checkRedaction(const MachineFile& machine, const Findings& findings) {
  const std::string text = machineFileText(recorded(machine, true));
  require(reread(text) == text, "a redacted recording is read as it was written");
  const MachineFile redacted = *parsed(text);
  const std::set<std::string> before = serialNumbers(findings);
  for (const std::string& value : serialNumbers(ask(redacted))) {
    require(!before.contains(value), "this serial number is gone: " + value);
  }
}

void checkMachine(const MachineFile& machine) {
  const std::string text = machineFileText(machine);
  require(reread(text) == text, "a machine is read as it was written");
  if (!isSmall(machine)) return;
  const Findings findings = ask(machine);
  checkFormats(findings);
  checkTables(findings);
  checkSummary(findings);
  checkExplanation(findings, machine, text.size());
  checkDocuments(findings);
  checkRecording(machine, traceOf(findings), text.find(kCredential) != std::string::npos);
  checkRedaction(machine, findings);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  useSchema();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (const auto machine = parsed(textOf(data, size))) checkMachine(*machine);
  return 0;
}
