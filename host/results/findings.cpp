// SPDX-License-Identifier: Apache-2.0
#include "host/results/findings.h"

#include <algorithm>
#include <utility>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/emptyclasses.h"
#include "host/collectors/queryrun.h"
#include "host/machine/jsondocument.h"
#include "host/machine/machine.h"
#include "host/machine/machinedocument.h"
#include "host/machine/machinefile.h"
#include "host/machine/machinenames.h"
#include "host/results/documentreading.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

using NKRXVEL20::host::Traffic;

// Of a result document with all its traffic: the largest machine needs less than half.
constexpr std::size_t kMostResultValues = 2'000'000;

// How the machine is asked that a file describes.
struct Asking {
  fs::path programFolder;
  bool keepTraffic = false;
};

Findings askedMachine(MachineFile described, const Asking& asking) {
  Machine machine = describedMachine(std::move(described));
  auto collectors = collectorFiles({}, machine, asking.programFolder);
  QueryRun run(
      std::move(machine),
      {.collectors = std::move(collectors), .keepTraffic = asking.keepTraffic, .onCoreLog = {}});
  const auto unnamed = run.companionClasses();
  QueryResult result = run.request(run.defaultClasses(), true);
  leaveOutEmpty(unnamed, EmptyClasses::kTroubledStay, result);
  return {run.context(), std::move(result)};
}

// Before the document is read: a machine file has a budget of its own.
std::size_t mostValuesOf(std::string_view text) {
  const std::string named = '"' + std::string(kMachineFormat) + '"';
  return text.find(named) == std::string_view::npos ? kMostResultValues : kMostValues;
}

std::string formatOf(const Cursor& document) {
  std::string format;
  document.eachMember([&](const std::string& key, const Cursor& value) {
    if (key == "format") format = value.text();
  });
  return format;
}

// The plain JSON of classes is known by having nothing but lists.
bool isPlain(const Json& document) {
  return !document.contains("format") &&
         std::ranges::all_of(document, [](const Json& member) { return member.is_array(); });
}

Findings findingsOfDocument(const Json& document, const fs::path& file, const Asking& asking) {
  const Cursor root(document);
  if (root.isObject() && isPlain(document)) {
    return plainFindings(document, toUtf8(file.filename().string()));
  }
  const std::string format = formatOf(root);
  if (format == kInventoryFormat) return inventoryFindings(document);
  if (format == kResultFormat) return resultFindings(document);
  if (format == kMachineFormat) return askedMachine(machineOfDocument(document, file), asking);
  root.failAt("format", "must be one of \"" + std::string(kInventoryFormat) + "\", \"" +
                            std::string(kResultFormat) + "\", \"" + std::string(kMachineFormat) +
                            '"');
}

}  // namespace

Findings findingsOf(const fs::path& file, const fs::path& programFolder, Traffic traffic) {
  const Asking asking{programFolder, traffic == Traffic::kKept};
  const std::string text = readInput(file);
  const fs::path name = machineFileName(file);
  if (isDump(text)) return askedMachine(parseMachineFile(text, name), asking);
  try {
    return findingsOfDocument(parseDocument(text, mostValuesOf(text)), name, asking);
  } catch (const DocumentError& error) {
    throw InputError(name.string() + ":" + error.what());
  }
}

}  // namespace velhost
