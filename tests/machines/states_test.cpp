// SPDX-License-Identifier: Apache-2.0
//
// In which state each class of the firmware collector ends on every machine, and for some of them
// why. The rows were made by the program and then read through against the machine files; which
// classes have instances is held against the machines' expected documents, which were not.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "host/collectors/queryrun.h"
#include "host/machine/machine.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

// A letter a state.
constexpr std::pair<State, char> kLetters[] = {
    {State::kPresent, 'P'},    {State::kPartial, '~'},   {State::kAbsent, '-'},
    {State::kElsewhere, '>'},  {State::kUnused, '.'},    {State::kUnanswered, '!'},
    {State::kUnreadable, '?'}, {State::kForbidden, 'x'}, {State::kFailed, 'F'},
};

char letterOf(State state) {
  return std::ranges::find(kLetters, state, &std::pair<State, char>::first)->second;
}

QueryResult resultOf(const std::string& machine) {
  QueryRun run(machineOfFile(fs::path(MACHINES_DIR) / (machine + ".json")),
               {.collectors = {.loaded = {PLUGIN_FILE}, .onDemand = {}}, .onCoreLog = {}});
  return run.request(run.defaultClasses(), true);
}

// In the order of the default classes: DiagnosticVPD, PostBIOSVPD, SystemBIOSElement,
// HardwareRevisionLevel, Vpd, SPROMFirmwareVPDMain, SPROMFirmwareVPDBootROM, DeviceDriver,
// SystemBIOS, cKVM, USBTapeFirmwareElement.
struct MachineRow {
  const char* machine;
  const char* states;
};

constexpr MachineRow kMachines[] = {
    {"backplane-alternate", "P.~P~PP..-."},
    {"bmc-with-ipmi-drivers", "P.~P>PP..-."},
    {"both-sends-fail-midway", "~.~~!P~..-."},
    {"both-sends-fail", "~.P!P~!..-."},
    {"brenna-zpxn42bqd", "-.P--P-..-."},
    {"brenna", "-.P--P-..-."},
    {"calloway", "P.P----..-."},
    {"ckvm-bad-completion", "P.P----..~."},
    {"ckvm-blank-level", "P.P----..~."},
    {"ckvm-class-missing", "P.P----..F."},
    {"ckvm-device-code", "P.P----..~."},
    {"ckvm-empty-reply", "P.P----..~."},
    {"ckvm-faults", "P.P----..~."},
    {"ckvm-long-reply", "P.P----..P."},
    {"ckvm-no-device", "P.P----..-."},
    {"ckvm-no-usb-device", "P.P----..-."},
    {"ckvm-send-fails", "P.P----..~."},
    {"ckvm-short-reply", "P.P----..~."},
    {"ckvm-text-behind-zeros", "P.P----..P."},
    {"ckvm-unprintable", "P.P----..~."},
    {"ckvm-usb-class-missing", "P.P----..F."},
    {"ckvm", "P.P----..P."},
    {"class-missing", "P.FPFPP..-."},
    {"components-silent", "P.~P!PP..-."},
    {"diagnostics-empty-on-both-nodes", "P.~P!PP..-."},
    {"diagnostics-empty-then-filled", "P.~P!PP..-."},
    {"diagnostics-filled-then-empty", "P.~P!PP..-."},
    {"diagnostics-node-without-vpd", "~.~~!P~..-."},
    {"durnik-no-bios", "-.---P-..-."},
    {"durnik-two-bios", "-.P--P-..-."},
    {"eight-nodes", "P.PPPPP..-."},
    {"empty-command-answered", "P.~P!!P..-."},
    {"empty-machine", "?.?--?-..?."},
    {"faults-at-publication", "~F~FF~FFFFF"},
    {"faults-without-sp", "~.~--~-..-."},
    {"faults", "~.~~~FF..-."},
    {"fields-full-and-empty", "P.PPPPP..-."},
    {"first-send-fails", "P.~P~PP..-."},
    {"hostile-table", "P.P----..-."},
    {"ipmi-fru-instances", "P.~P>PP..-."},
    {"ipmi-fru-single", "P.P->P-..-."},
    {"memory-slots", "-.P----..-."},
    {"no-sp-two-oem-structures", "P.P--P-..-."},
    {"odd-replies", "P.~P~PP..-."},
    {"oem-strings-with-levels", "P.---P-..-."},
    {"oem-strings", "P.P--P-..-."},
    {"one-sp-everything", "P.PPPPP..P."},
    {"ordinary-server-corrupt-fru", "-.P->--..-."},
    {"ordinary-server-sdr-loop", "-.P->--..-."},
    {"ordinary-server-silent-bmc", "-.P----..-."},
    {"ordinary-server-small-reads", "-.P->--..-."},
    {"ordinary-server", "-.P->--..-."},
    {"qemu-q35", "P.P--P-..-."},
    {"qla-class-missing", "FFFFFFFFFFF"},
    {"release-dates", "-.P----..-."},
    {"runtime-error", "FFFFFFFFFFF"},
    {"smbios-cannot-open", "P.?PP~~..?."},
    {"smbios-identity", "-.P----..-."},
    {"smbios-no-structures", "-.-----..-."},
    {"smbios-read-fails", "~.~--~-..-."},
    {"sp-silent", "~.~!!~!..-."},
    {"structure-status", "?.P--~-..-."},
    {"tamber-failing", "P.P--~-..-."},
    {"tamber-length-too-large", "P.P--P-..-."},
    {"tamber-level-with-points", "-.P--P-..-."},
    {"tamber-long-reply", "P.P--P-..-."},
    {"tamber-short-reply", "P.P--P-..-."},
    {"tamber-silent", "P.P--!-..-."},
    {"tamber-torvik-library-twg-stop", "P.P--P-..-."},
    {"tamber-torvik-library", "P.P--~-..-."},
    {"tamber", "P.P--P-..-."},
    {"tape-and-usb-companions", "P.P----..-."},
    {"two-nodes", "P.PP~PP..-."},
    {"uefi-two-node", "P.PPPPP..-."},
};

struct ReasonRow {
  const char* machine;
  const char* className;  // without KRXSG_
  const char* reason;
};

constexpr ReasonRow kReasons[] = {
    {"uefi-two-node", "DeviceDriver", "no collector ever fills it"},
    {"uefi-two-node", "cKVM", "machines of type 5020 have none"},
    {"uefi-two-node", "USBTapeFirmwareElement", "its collector asks none of its sources"},
    {"empty-machine", "SystemBIOSElement", "the SMBIOS tables cannot be opened (status 1)"},
    {"empty-machine", "Vpd", "no SP speaks dot commands"},
    {"empty-machine", "cKVM", "the SMBIOS tables cannot be opened (status 1)"},
    {"smbios-cannot-open", "SPROMFirmwareVPDMain", "the SMBIOS tables cannot be opened (status 7)"},
    {"smbios-read-fails", "SystemBIOSElement", "reading SMBIOS type 0 ended with status 3"},
    {"structure-status", "DiagnosticVPD", "reading SMBIOS type 11 ended with status 9"},
    {"smbios-no-structures", "SPROMFirmwareVPDMain",
     "no SP speaks dot commands; no SP is of the Tamber family; SMBIOS has no structure of type "
     "11"},
    {"calloway", "SPROMFirmwareVPDMain",
     "no SP speaks dot commands; no SP is of the Tamber family; no string of SMBIOS type 11 has "
     "\"KRX Ambrel Management Processor\" or 4 others"},
    {"durnik-no-bios", "SystemBIOSElement",
     "no SP speaks dot commands; SMBIOS has no structure of type 0"},
    {"sp-silent", "HardwareRevisionLevel",
     "the service processor does not answer dot commands; check it and its driver"},
    {"sp-silent", "SystemBIOSElement",
     "the service processor does not answer dot commands; check it and its driver"},
    {"both-sends-fail", "HardwareRevisionLevel",
     "command 04 03 05 07 was not sent after command 04 03 05 06 01 was refused twice"},
    {"both-sends-fail", "SPROMFirmwareVPDMain", "command 04 03 05 06 01 was refused twice"},
    {"both-sends-fail-midway", "SPROMFirmwareVPDBootROM",
     "1 of 2 commands was not answered: command 04 03 05 06 02 was refused twice by SP 1"},
    {"both-sends-fail-midway", "HardwareRevisionLevel",
     "SP 1 was not asked 04 03 05 07, as command 04 03 05 06 02 was refused twice by SP 1"},
    {"both-sends-fail-midway", "Vpd",
     "6 of 6 commands were not answered; the first: command 04 03 05 0D 01 was refused twice by SP "
     "1"},
    {"two-nodes", "Vpd",
     "3 of 20 commands were not answered; the first: command 04 03 05 0B 05 was refused once by SP "
     "2; "
     "an empty slot looks so"},
    {"first-send-fails", "Vpd",
     "1 of 7 commands was not answered: command 04 03 05 0B 01 was refused once; an empty slot "
     "looks "
     "so"},
    {"bmc-with-ipmi-drivers", "Vpd", "left to KRXSG_IPMIFRU, as a BMC answers"},
    {"ipmi-fru-instances", "Vpd", "left to KRXSG_IPMIFRU, which has 2"},
    {"ipmi-fru-single", "Vpd", "left to KRXSG_IPMIFRU, which has 1"},
    {"tamber", "HardwareRevisionLevel", "no SP speaks dot commands"},
    {"tamber-failing", "SPROMFirmwareVPDMain", "command 01 F1 F1 0F was refused once"},
    {"tamber-silent", "SPROMFirmwareVPDMain", "command 01 F1 F1 0F was refused once"},
    {"tamber-torvik-library", "SPROMFirmwareVPDMain",
     "the Torvik Management Processor library keeps the service processor to itself"},
    {"ckvm-bad-completion", "cKVM",
     "1.3.11.37 is a fixed value: the BMC refused command 06 52 with completion code C1"},
    {"ckvm-send-fails", "cKVM", "1.3.11.37 is a fixed value: the BMC did not answer command 06 52"},
    {"ckvm-unprintable", "cKVM",
     "1.3.11.37 is a fixed value: the answer to command 06 52 has none"},
    {"ckvm-blank-level", "cKVM",
     "1.3.11.37 is a fixed value: the answer to command 06 52 has none"},
    {"ckvm-no-device", "cKVM", "no KRXSG_USBDevice has \"cKVM\" in its Description"},
    {"ckvm-usb-class-missing", "cKVM", "the framework refused get_class of KRXSG_USBDevice once"},
    {"ckvm-class-missing", "cKVM", "the framework refused get_class of KRXSG_cKVM once"},
    {"ckvm-faults", "cKVM",
     "the framework refused set_property of KRXSG_cKVM.FirmwareVersion once"},
    {"class-missing", "Vpd", "the framework refused get_class of KRXSG_Vpd 7 times"},
    {"qla-class-missing", "Vpd",
     "SPFirmwareVPD ended in TVELException code 5: no class KRXSG_QLA_ComputerSystem"},
    {"runtime-error", "SystemBIOSElement",
     "SPFirmwareVPD ended in std::runtime_error: a failure that the host asked for"},
};

std::string statesOf(const QueryResult& result) {
  std::string letters;
  for (const ClassState& state : result.states) letters += letterOf(state.state);
  return letters;
}

std::string reasonOf(const QueryResult& result, const std::string& className) {
  const auto found = std::ranges::find(result.states, "KRXSG_" + className, &ClassState::className);
  return found == result.states.end() ? "no state" : found->reason;
}

TEST(States, OfEveryMachine) {
  for (const MachineRow& row : kMachines) {
    const QueryResult result = resultOf(row.machine);
    EXPECT_EQ(row.states, statesOf(result)) << row.machine;
    for (const ClassState& state : result.states) {
      EXPECT_EQ(state.state == State::kPresent, state.reason.empty())
          << row.machine << ' ' << state.className << ": " << state.reason;
    }
  }
}

std::set<std::string> classesWithInstances(const std::string& machine) {
  std::ifstream file(fs::path(MACHINES_DIR) / "expected" / (machine + ".json"));
  std::set<std::string> classes;
  const auto document = nlohmann::json::parse(file);
  for (const auto& instance : document.at("queries").at(0).at("instances")) {
    classes.insert(instance.at("class"));
  }
  return classes;
}

TEST(States, PresentOrPartialIsWhatHasInstancesInTheExpectedDocument) {
  for (const MachineRow& row : kMachines) {
    const auto classes = classesWithInstances(row.machine);
    for (const ClassState& state : resultOf(row.machine).states) {
      const bool isThere = state.state == State::kPresent || state.state == State::kPartial;
      EXPECT_EQ(classes.contains(state.className), isThere)
          << row.machine << ' ' << state.className;
    }
  }
}

TEST(States, EveryMachineFileHasARow) {
  std::set<std::string> files;
  for (const auto& entry : fs::directory_iterator(MACHINES_DIR)) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(".json")) files.insert(name);
  }
  files.erase("machine.schema.json");
  std::set<std::string> rows;
  for (const MachineRow& row : kMachines) rows.insert(std::string(row.machine) + ".json");
  EXPECT_EQ(files, rows);
}

TEST(States, ReasonsTellWhatWasSeen) {
  for (const ReasonRow& row : kReasons) {
    EXPECT_EQ(row.reason, reasonOf(resultOf(row.machine), row.className))
        << row.machine << ' ' << row.className;
  }
}

}  // namespace
}  // namespace velhost
