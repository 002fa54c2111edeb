// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/expectedcalls.h"

#include <algorithm>

namespace spyplatform {

namespace {

constexpr char kAsPlugin[] = "{asker: \"plug-ins\"}";
constexpr char kNoDate[] = "00000000000000.000000+000";
constexpr char kDate[] = "20070315000000.000000+000";  // 03/15/07
constexpr char kBiosStrings[] = "Maker|1.08 [ABC123]|03/15/07";

std::string number(int value) { return std::to_string(value); }

// The commands of the descriptor walk: their bytes, how many lines follow them, which of those is
// the build date (from 1; 0: none), how long the reply is.
struct Group {
  std::vector<int> path;
  int lines;
  int dateLine;
  int replyLength;
};

const std::vector<Group>& groups() {
  static const std::vector<Group> kGroups = {
      {{4, 3, 5, 6, 1}, 7, 5, 40},   // SP main firmware
      {{4, 3, 5, 6, 2}, 7, 5, 40},   // SP boot-ROM firmware
      {{4, 3, 5, 7}, 1, 0, 1},       // hardware revision level
      {{4, 3, 5, 1, 1}, 12, 10, 69}  // diagnostics
  };
  return kGroups;
}

std::string hexPath(const std::vector<int>& path) {
  std::string result;
  for (const int byte : path) result += (result.empty() ? "0" : " 0") + number(byte);
  return result;
}

}  // namespace

std::string u8(int value) { return "uint8 " + number(value); }
std::string u16(int value) { return "uint16 " + number(value); }
std::string date(const std::string& timestamp) { return "date " + timestamp; }

void ExpectedCalls::call(const std::string& line) { lines_.push_back(line); }

void ExpectedCalls::log(int severity, const std::string& text) {
  call("Log(" + number(severity) + ", " + quoted(text) + ")");
}

void ExpectedCalls::trace(const std::string& text, const std::string& value) {
  log(3, text);
  log(3, value);
}

void ExpectedCalls::says(const std::string& operation, bool answer) {
  call(operation + "() -> " + (answer ? "true" : "false"));
}

void ExpectedCalls::counts(const std::string& operation, int answer) {
  call(operation + "() -> " + number(answer));
}

void ExpectedCalls::getClass(const std::string& className) {
  call("namespace.GetClass(" + quoted(className) + ", " + kAsPlugin + ")");
}

void ExpectedCalls::enumerate(const std::string& className, int count) {
  getClass(className);
  call(className + ".GetInstances(deep true, {}) -> " + number(count));
}

std::string ExpectedCalls::create(const std::string& className) {
  std::string instance = "instance#" + number(++instances_);
  getClass(className);
  call(className + ".CreateInstance() -> " + instance);
  return instance;
}

void ExpectedCalls::set(const std::string& instance, const std::string& property,
                        const std::string& value) {
  call(instance + ".SetProperty(" + quoted(property) + ", " + value + ", {})");
}

void ExpectedCalls::set(const std::string& instance, const std::vector<Setting>& settings) {
  for (const auto& [property, value] : settings) set(instance, property, value);
}

void ExpectedCalls::construction() {
  call("GetPluginManager()");
  call("RegisterPlugin(plug-in#1)");
}

void ExpectedCalls::publish(const std::string& className,
                            const std::vector<std::string>& instances) {
  call(className + ".GetName({})");
  for (const std::string& instance : instances) call(instance + ".AddToClass({})");
}

void ExpectedCalls::openSmbios() { call("smBiosLoad(null) -> 0"); }

void ExpectedCalls::firstStructure(int type) {
  log(3, "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure");
  call("smBiosGetFirst(handle, " + number(type) + ", 4096 zero bytes, size 4096) -> 0");
}

void ExpectedCalls::noNextStructure() {
  log(3, "SMBIOSInfo::getSMBIOSInfo - Retrieving the next SMBIOS structure.");
  call("smBiosGetNext(handle, 4096 zero bytes, size 4096) -> 5");
  log(3, "SMBIOSInfo::getSMBIOSInfo - read all smbios structures available for type 0");
}

void ExpectedCalls::closeSmbios() { call("smBiosClose(handle)"); }

void ExpectedCalls::smbiosString(int windowSize, const std::string& strings, int number_,
                                 const std::string& text) {
  call("getBIDString(" + number(windowSize) + " bytes " + quoted(strings) + ", 100 zero bytes, " +
       number(windowSize) + ", " + number(number_) + ") -> " + quoted(text));
}

void ExpectedCalls::oemStrings(const std::vector<OemString>& strings) {
  std::string set;
  for (const OemString& string : strings) set += (set.empty() ? "" : "|") + string.text;
  log(3, "Entering SPFirmwareVpd::getType11()");
  openSmbios();
  firstStructure(11);
  for (std::size_t i = 0; i < strings.size(); ++i) {
    smbiosString(1024, set, static_cast<int>(i) + 1, strings[i].text);
    if (strings[i].copy.empty()) continue;
    call("removeNonAlpaNumeric(" + quoted(strings[i].text) + ") -> " + quoted(strings[i].copy));
  }
  noNextStructure();
  closeSmbios();
  log(3, "Exiting SPFirmwareVpd::getType11()");
}

void ExpectedCalls::noOemStrings() {
  log(3, "Entering SPFirmwareVpd::getType11()");
  openSmbios();
  log(3, "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure");
  call("smBiosGetFirst(handle, 11, 4096 zero bytes, size 4096) -> 5");
  log(3, "SMBIOSInfo::getSMBIOSInfo - read all smbios structures available for type 0");
  closeSmbios();
  log(3, "Exiting SPFirmwareVpd::getType11()");
}

void ExpectedCalls::machineType(const std::string& type) {
  log(3, "getMachineType() entered.");
  call("GetMachineTypeFromID() -> " + quoted(type));
  log(3, "getMachineType() completed.");
}

void ExpectedCalls::split(const std::string& text, const std::string& cleaned,
                          const std::string& version, const std::string& build) {
  call("removeNonAlpaNumeric(" + quoted(text) + ") -> " + quoted(cleaned));
  call("breakApartVersion(" + quoted(cleaned) + ", " + quoted(cleaned) + ") -> " + quoted(version) +
       ", " + quoted(build));
}

std::string ExpectedCalls::diagnosticsOfOemString(const std::string& level,
                                                  const std::string& version,
                                                  const std::string& shownVersion,
                                                  const std::string& build) {
  log(3, "Entering  SPFirmwareVpd::createDiagInstance");
  std::string instance = create("KRXSG_DiagnosticVPD");
  split(level, level, version, build);
  set(instance, {{"BuildNumber", quoted(build)},
                 {"Version", quoted(shownVersion)},
                 {"SoftwareElementID", quoted(" ")},
                 {"SoftwareElementState", u16(3)},
                 {"TargetOperatingSystem", u16(66)}});
  log(3, "Leaving  SPFirmwareVpd::createDiagInstance");
  return instance;
}

std::string ExpectedCalls::diagnosticsOfNode(int node) {
  std::string instance = create("KRXSG_DiagnosticVPD");
  set(instance, {{"Header", quoted("HD")},
                 {"Signature", quoted("SIG")},
                 {"Length", quoted("L")},
                 {"BuildNumber", quoted("BUILD-009")},
                 {"SerialNumber", quoted("SERIAL7")},
                 {"UniqueID", quoted("UNIQUE-ID11")},
                 {"MachineTypeModel", quoted("5010AC1")},
                 {"FileName", quoted("NODEFILE.ROM")},
                 {"Version", quoted("7")},
                 {"SoftwareElementID", quoted(number(node))},
                 {"SoftwareElementState", u16(3)},
                 {"TargetOperatingSystem", u16(66)},
                 {"SourceNode", u8(node)},
                 {"Name", quoted("Node " + number(node) + " : Diagnostics")}});
  return instance;
}

std::vector<std::string> ExpectedCalls::systemBios(const std::string& machineType_, int nodes,
                                                   bool isUefi, bool isDotCommand) {
  log(3, "Entering SPFirmwareVpd::getBIOSstructure()");
  machineType(machineType_);
  openSmbios();
  firstStructure(0);
  counts("GetNumberBMCNode", nodes);
  std::vector<std::string> instances;
  for (int node = 1; node <= std::max(nodes, 1); ++node) {
    instances.push_back(create("KRXSG_SystemBIOSElement"));
    biosElement(instances.back(), node, nodes, isUefi, isDotCommand);
  }
  noNextStructure();
  closeSmbios();
  log(3, "Exiting SPFirmwareVpd::getBIOSstructure()");
  return instances;
}

void ExpectedCalls::biosElement(const std::string& instance, int node, int nodes, bool isUefi,
                                bool isDotCommand) {
  says("IsIntegratedBMC", isUefi);
  const std::string firmware = isUefi ? "UEFI" : "System BIOS";
  const std::string name = nodes > 1 ? "Node " + number(node) + " : " + firmware : firmware;
  set(instance, {{"SourceNode", u8(node)},
                 {"Name", quoted(name)},
                 {"SoftwareElementState", u16(3)},
                 {"SoftwareElementID", quoted("SP Firmware VPD Collector")},
                 {"TargetOperatingSystem", u16(66)},
                 {"PrimaryBIOS", "true"},
                 {"LoadedStartingAddress", "uint64 3758096384"},  // 0xE0000000
                 {"LoadedEndingAddress", "uint64 4128768"}});     // 0x3F0000
  smbiosString(100, kBiosStrings, 3, "03/15/07");
  call("TCIMDateTime()");
  call(std::string("fdrSetDateTime(") + kNoDate + ", 2007, 3, 15, 0, 0, 0, 0, 0) -> 0");
  set(instance, "ReleaseDate", date(kDate));
  smbiosString(100, kBiosStrings, 1, "Maker");
  set(instance, "Manufacturer", quoted("Maker"));
  smbiosString(100, kBiosStrings, 2, "1.08 [ABC123]");
  split("1.08 [ABC123]", "108ABC123", "108", "ABC123");
  set(instance, {{"Version", quoted("108")}, {"BuildNumber", quoted("ABC123")}});
  says("isDotcommand", isDotCommand);
  if (!isDotCommand) return;
  says("checkSPComm", true);
  const std::string command = makeDotCommand("04 03 05 01");
  sendDotCommand(command, 0, node - 1, 69);
  destroy(command);
  set(instance, {{"FileName", quoted("NODEFILE.ROM")},
                 {"UniqueID", quoted("UNIQUE-ID11")},
                 {"MachineTypeModel", quoted("5010AC1")},
                 {"SerialNumber", quoted("SERIAL7")}});
}

std::string ExpectedCalls::firmwareOfOemString(const std::string& elementId,
                                               const OemString& oemString) {
  std::string instance = create("KRXSG_SPROMFirmwareVPDMain");
  set(instance, {{"Version", quoted(" ")},
                 {"BuildNumber", quoted(oemString.copy)},
                 {"SoftwareElementID", quoted(elementId)},
                 {"Name", quoted(oemString.text)},
                 {"SoftwareElementState", u16(3)},
                 {"TargetOperatingSystem", u16(66)}});
  return instance;
}

// The name, the path and the data of a request, as a send shows them.
std::string ExpectedCalls::makeDotCommand(const std::string& path) {
  const std::string name = "dotCmd#" + number(++dotCommands_);
  const int count = (static_cast<int>(path.size()) + 1) / 3;
  call(name + "(2, " + number(count) + ", 0, " + path + ", one byte 00)");
  return name + " " + path;
}

std::string ExpectedCalls::makeDotCommand(const std::string& path, const std::string& data) {
  const std::string name = "dotCmd#" + number(++dotCommands_);
  call(name + "(2, 5, 4, " + path + ", " + data + ")");
  return name + " " + path + " / " + data;
}

void ExpectedCalls::sendDotCommand(const std::string& command, int lengthBefore, int spIndex,
                                   int length) {
  call("sendDotCommand(" + command + ", 2048 zero bytes, length " + number(lengthBefore) + ", SP " +
       number(spIndex) + ", 2048) -> " + (length < 0 ? "false" : "true, length " + number(length)));
}

void ExpectedCalls::destroy(const std::string& object) {
  call("~" + object.substr(0, object.find(' ')));
}

void ExpectedCalls::descriptorWalk(int spIndex, bool hasDiagnostics) {
  if (spIndex == 0) commandTrace_.clear();
  trace(" starting to read data types of dotcommand ", "d|5|4|3|5|6|1|KRXSG_SPROMFirmwareVPDMain|");
  for (int i = 0; i < 4; ++i) descriptorGroup(spIndex, i, i < 3 || hasDiagnostics);
}

void ExpectedCalls::descriptorGroup(int spIndex, int index, bool hasDate) {
  const Group& group = groups().at(static_cast<std::size_t>(index));
  for (const int byte : group.path) {
    trace(" reading dotcommand ", number(byte));
    commandTrace_ += number(byte);
  }
  trace("dotcommand ", commandTrace_);
  const std::string command = makeDotCommand(hexPath(group.path));
  sendDotCommand(command, 0, spIndex, group.replyLength);
  log(3, " memset data ");
  log(3, "sent dotcommand to sp driver");
  // The line behind the group is looked at as well; behind the last group there is none.
  const int lines = index == 3 ? group.lines : group.lines + 1;
  for (int line = 1; line <= lines; ++line) {
    log(3, "spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , description");
    if (line != group.dateLine || !hasDate) continue;
    call("TCIMDateTime()");
    call(std::string("fdrSetDateTime(") + kNoDate + ", 2007, 3, 15, 0, 0, 0, 0, 0) -> 0");
  }
  destroy(command);
}

std::string ExpectedCalls::recordInstance(const std::string& className, const std::string& ownName,
                                          const std::string& node,
                                          const std::vector<Setting>& settings) {
  const std::string nodeName = "Node " + node + " : " + ownName;
  std::string instance;
  for (const char* current :
       {"KRXSG_DiagnosticVPD", "KRXSG_PostBIOSVPD", "KRXSG_SystemBIOSElement",
        "KRXSG_HardwareRevisionLevel", "KRXSG_Vpd", "KRXSG_SPROMFirmwareVPDMain",
        "KRXSG_SPROMFirmwareVPDBootROM", "KRXSG_DeviceDriver"}) {
    log(3, std::string("IN getSPFirmwareVpd:: Current Class = ") + current +
               ". Current Iter = " + className);
    if (className != current) continue;
    instance = create(className);
    if (!ownName.empty()) set(instance, "Name", quoted(ownName));
    for (const auto& [property, value] : settings) {
      if (property == "BuildDate") call(std::string("TCIMDateTime(") + quoted(kDate) + ")");
      if (property == "SourceNode") {
        call(instance + ".GetProperty(\"Name\", {})");
        call(instance + ".Name.GetValueAsString() -> " + quoted(ownName));
        set(instance, "Name", quoted(nodeName));
      }
      set(instance, property, value);
    }
  }
  return instance;
}

// The properties in the order of their names.
std::string ExpectedCalls::firmwareRecord(const std::string& className, const std::string& spName,
                                          const std::string& node, const std::string& fileName) {
  return recordInstance(className, spName, node,
                        {{"BuildDate", date(kDate)},
                         {"BuildNumber", quoted("BUILD07")},
                         {"Checksum", quoted("171")},  // 0xAB
                         {"FileName", quoted(fileName)},
                         {"PartNumber", quoted("PART-008")},
                         {"SoftwareElementID", quoted(node)},
                         {"SoftwareElementState", u16(3)},
                         {"SourceNode", "uint8 " + node},
                         {"TargetOperatingSystem", u16(66)},
                         {"Version", quoted("9")}});
}

std::string ExpectedCalls::hardwareRecord(const std::string& node, const std::string& level) {
  return recordInstance("KRXSG_HardwareRevisionLevel", "", node,
                        {{"Hardwarelevel", quoted(level)},
                         {"SoftwareElementID", quoted(node)},
                         {"SoftwareElementState", u16(3)},
                         {"SourceNode", "uint8 " + node},
                         {"TargetOperatingSystem", u16(66)},
                         {"Version", quoted(level)}});
}

// The Signature has no name and stays out.
std::string ExpectedCalls::diagnosticsRecord(const std::string& node) {
  return recordInstance("KRXSG_DiagnosticVPD", "", node,
                        {{"BuildDate", date(kDate)},
                         {"BuildNumber", quoted("BUILD-009")},
                         {"Checksum", quoted("33")},  // 0x21
                         {"FileName", quoted("NODEFILE.ROM")},
                         {"Header", quoted("HD")},
                         {"Length", quoted("76")},  // L
                         {"MachineTypeModel", quoted("5010AC1")},
                         {"SerialNumber", quoted("SERIAL7")},
                         {"SoftwareElementID", quoted(node)},
                         {"SoftwareElementState", u16(3)},
                         {"SourceNode", "uint8 " + node},
                         {"TargetOperatingSystem", u16(66)},
                         {"UniqueID", quoted("UNIQUE-ID11")},
                         {"Version", quoted("")}});
}

void ExpectedCalls::computerSystem(int index, int node, const std::string& description) {
  const std::string instance = "KRXSG_QLA_ComputerSystem[" + number(index) + "]";
  call(instance + ".GetProperty(\"SourceNode\", {})");
  call(instance + ".SourceNode.GetValue()");
  call("TCIMValue.ToUint64() -> " + number(node));
  call(instance + ".GetProperty(\"Description\", {})");
  call(instance + ".Description.GetValueAsString() -> " + quoted(description));
}

void ExpectedCalls::buildCommandLists() {
  call("buildDotCommandList(4096 zero bytes; 4096 zero bytes; 4096 zero bytes) -> true");
  log(3, "1.1 command passed : got dotcommand list ");
}

void ExpectedCalls::exchange(const std::string& path, const std::string& data, int lengthBefore,
                             int spIndex, int length, const std::function<void()>& handle) {
  const std::string request = makeDotCommand(path, data);
  sendDotCommand(request, lengthBefore, spIndex, length);
  handle();
  destroy(request);
}

void ExpectedCalls::countComponents(const std::string& path, int count) {
  call("getComponentdotCmdList(" + path +
       ", 5, 4096 bytes A0, then zeros; 4096 bytes A1, then zeros; 4096 bytes A2, then zeros) -> " +
       number(count));
}

std::string ExpectedCalls::component(const ComponentNames& names, const std::string& fruNumber) {
  std::string instance = create("KRXSG_Vpd");
  set(instance, {{"Name", quoted(names.name)},
                 {"IdentifyingNumber", quoted(" ")},
                 {"Location", quoted(names.nodeLabel)},
                 {"PartNumber", quoted("PART-NUMBER1")},
                 {"SerialNumber", quoted("SER006")},
                 {"FRUNumber", quoted(fruNumber)},
                 {"DevicePrefix", quoted("SER006")},
                 {"Vendor", quoted("VEND")},
                 {"SlotNumber", quoted("S")}});
  return instance;
}

std::string ExpectedCalls::dimm(const std::string& nodeLabel, int dimmNumber) {
  const std::string prefix = nodeLabel.empty() ? "" : nodeLabel + ": ";
  std::string instance = create("KRXSG_Vpd");
  set(instance, {{"Name", quoted(prefix + "DIMM " + number(dimmNumber))},
                 {"IdentifyingNumber", quoted(number(dimmNumber))},
                 {"FRUNumber", quoted(" ")},
                 {"Vendor", quoted("Corsair")},
                 {"Location", quoted(prefix + "Q")},
                 {"PartNumber", quoted("DIMM-PART")},
                 {"RevisionLevel", quoted("R2")},
                 {"SerialNumber", quoted("01AB007F")}});
  return instance;
}

std::string ExpectedCalls::planar(const ComponentNames& names) {
  std::string instance = create("KRXSG_Vpd");
  set(instance, {{"IdentifyingNumber", quoted(" ")},
                 {"Name", quoted(names.name)},
                 {"Vendor", quoted(" ")},
                 {"FRUNumber", quoted(" ")},
                 {"Location", quoted(names.nodeLabel)},
                 {"PartNumber", quoted("PLANAR-PART1")},
                 {"SerialNumber", quoted("PSER06")}});
  return instance;
}

// The fixed entry, odd as it is, then the text.
void ExpectedCalls::componentMissing(const std::string& failureLogText) {
  log(3, "getMachineType() completed.");
  call("fdrWriteLog(3, " + quoted(failureLogText) + ")");
}

}  // namespace spyplatform
