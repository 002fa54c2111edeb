// SPDX-License-Identifier: Apache-2.0
#include "host/recording/record.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/collectors/queryrun.h"
#include "host/recording/credentials.h"
#include "host/recording/recordedtraffic.h"
#include "host/recording/redaction.h"
#include "host/text/utf8.h"
#include "vel/splibrary.h"
#include "velhost/schema.h"
#include "velhost/spdriver.h"

namespace velhost {
namespace {

using NKRXVEL20::SPLibrary;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SPKind;

constexpr std::size_t kCommandListSize = 4096;

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

SPKind kindOf(SPLibrary& library) {
  if (library.isDotcommand()) return SPKind::kDotCommand;
  return library.isTamber() ? SPKind::kTamber : SPKind::kNone;
}

bool buildsCommandList(SPLibrary& library) {
  std::array<std::array<unsigned char, kCommandListSize>, 3> lists{};
  return library.buildDotCommandList(lists[0].data(), lists[1].data(), lists[2].data());
}

// The driver's own facts, also those that the plug-in had no need of.
SimulatedSP askDriver(SPLibrary& library) {
  SimulatedSP sp;
  sp.kind = kindOf(library);
  if (sp.kind != SPKind::kNone) sp.answers = library.checkSPComm();
  if (sp.kind != SPKind::kNone && sp.answers) sp.commandList = buildsCommandList(library);
  sp.count = library.discoverSPs();
  sp.bmcNodes = library.GetNumberBMCNode();
  sp.bmc = library.IsBMCMachine();
  sp.ipmiDrivers = library.IsIPMIDriversPresent();
  sp.integratedBmc = library.IsIntegratedBMC();
  sp.twgStop = library.isTwgStop();
  sp.tvmLibrary = library.isTvmlibrary();
  sp.components = NKRXVEL20::host::componentsAsked();
  return sp;
}

SimulatedSP describeSP(const QueryResult& result) {
  SPLibrary* const library = SPLibrary::GetSplibraryInstance(0);
  if (library == nullptr) return {};
  SimulatedSP sp = askDriver(*library);
  addCommands(result.traffic, sp);
  return sp;
}

// All but the SP; that is known when the query has been made.
MachineFile describe(const Machine& machine) {
  MachineFile described;
  described.name = toUtf8(machine.name);
  described.description =
      machine.source == "live" ? "recorded from " + described.name : machine.description;
  described.machineType = machine.machineType;
  described.smbios = machine.smbios;
  described.instances = machine.companions;
  described.givenClasses = machine.givenClasses;
  described.collectors = machine.collectors;
  described.missingClasses = machine.missingClasses;
  described.faults = machine.faults;
  return described;
}

// The sources whose bytes the file holds, or that need none.
constexpr std::string_view kRecordedSources[] = {
    "DotCommand.VEL|", "TamberCommand.VEL|", "IPMI.VEL|",     "IPMI.SDR|",    "IPMI.FRU|",
    "SMBIOS.DMTF|",    "Instance.VEL|",      "Constant.VEL|", "Derived.VEL|",
};

bool isRecorded(std::string_view origin) {
  return std::ranges::any_of(
      kRecordedSources, [origin](std::string_view source) { return origin.starts_with(source); });
}

// What was asked gives the class's instances again: each value has its origin in it.
bool isAskedAgain(const ClassSchema& cimClass) {
  return std::ranges::all_of(cimClass.properties, [](const auto& property) {
    return !property.mappingStrings.empty() &&
           std::ranges::all_of(property.mappingStrings, isRecorded);
  });
}

// A class of another collector is asked for again, from what the file holds, or else it is held as it
// was published: whoever reads the file may have other devices, and no such collector.
void addCompanionClass(const ClassSchema& cimClass, const QueryResult& result,
                       MachineFile& machine) {
  const std::string name(cimClass.name);
  const std::string provider(cimClass.provider);
  if (!contains(machine.collectors, provider)) machine.collectors.push_back(provider);
  if (isAskedAgain(cimClass) || contains(machine.givenClasses, name)) return;
  machine.givenClasses.push_back(name);
  for (const auto& row : result.instances) {
    if (row.className == name) machine.instances.push_back({name, row.properties});
  }
}

void leaveOutCredentials(MachineFile& machine) {
  const std::size_t count = machine.smbios ? blankCredentials(*machine.smbios) : 0;
  if (count == 0) return;
  if (!machine.description.empty()) machine.description += "; ";
  machine.description += std::to_string(count) + (count == 1 ? " credential string left out"
                                                             : " credential strings left out");
}

}  // namespace

Recording record(Machine machine, const RecordOptions& options) {
  Recording recording;
  recording.machine = describe(machine);
  leaveOutCredentials(recording.machine);
  QueryRun queryRun(std::move(machine), {options.collectors, false, true, {}});
  const QueryResult result = queryRun.request(queryRun.defaultClasses(), true);
  recording.error = result.error;
  recording.failures = result.failures;
  for (const std::string& name : queryRun.companionClasses()) {
    addCompanionClass(*NKRXVEL20::host::findClass(name), result, recording.machine);
  }
  recording.machine.sp = describeSP(result);
  if (options.redact) redact(recording.machine);
  return recording;
}

}  // namespace velhost
