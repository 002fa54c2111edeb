// SPDX-License-Identifier: Apache-2.0
//
// What is read back of each kind of file.
#include "host/results/findings.h"

#include "host/formats/inventory.h"
#include "host/formats/resultdocument.h"
#include "host/text/hextext.h"
#include "tests/host/resultsample.h"
#include "tests/host/scratchfolder.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using Lines = std::vector<std::string>;
using NKRXVEL20::TCIMValue;

std::string valueText(const TCIMValue& value) {
  if (value == TCIMValue()) return "empty";
  const std::string text = value.ToString();
  return std::string(NKRXVEL20::host::typeName(value.GetType())) + ' ' +
         (text.find('\xFF') == std::string::npos ? text
                                                 : hexOfBytes(Bytes(text.begin(), text.end())));
}

// A line for the machine, for each requested class with its state, and for each property.
Lines linesOf(const Findings& findings) {
  const QueryContext& context = findings.context;
  Lines lines{context.machineSource + ": " + context.machineName + ", by " + context.plugin.name};
  for (const std::string& name : findings.result.requested) lines.push_back("asked: " + name);
  for (const ClassState& state : findings.result.states) {
    lines.push_back(state.className + ": " + std::string(stateName(state.state)) + ", " +
                    state.collector + ", " + state.reason);
  }
  for (const auto& instance : findings.result.instances) {
    lines.push_back(instance.className);
    for (const auto& [name, value] : instance.properties) {
      lines.push_back("  " + name + " = " + valueText(value));
    }
  }
  return lines;
}

class FindingsOf : public ScratchFolder {
 protected:
  Findings read(const std::string& name, const std::string& text) const {
    return findingsOf(put(name, text), TEST_PROVIDERS);
  }
  Lines lines(const std::string& text) const { return linesOf(read("some.json", text)); }
};

TEST_F(FindingsOf, AnInventory) {
  const Findings findings = read("x", R"({
    "format": "vel-inventory/1", "site": "added by somebody",
    "machine": { "source": "live", "name": "srv1" },
    "collectors": [ { "name": "FanCollector", "version": "2.1", "state": "failed", "reason": "why" } ],
    "classes": [
      { "class": "KRXSG_SystemBIOSElement", "collector": "SPFirmwareVPD", "state": "partial",
        "reason": "a reason", "instances": [
          { "SourceNode": 2, "TargetOperatingSystem": 66, "LoadedEndingAddress": 18446744073709551615,
            "PrimaryBIOS": true, "ReleaseDate": "20070315000000.000000+000", "Version": null,
            "Mine": 5 } ] },
      { "class": "MINE_Fan", "collector": null, "state": "present", "reason": null, "instances": [
          { "Speed": 4200, "Trend": -1, "Share": 0.5, "Ok": false, "Name": "fan", "None": null } ] },
      { "class": "KRXSG_cKVM", "collector": "SPFirmwareVPD", "state": "absent", "reason": "none here",
        "instances": [] } ] })");
  EXPECT_TRUE(findings.tellsStates);
  EXPECT_EQ((Lines{"live: srv1, by FanCollector",
                   "asked: KRXSG_SystemBIOSElement",
                   "asked: MINE_Fan",
                   "asked: KRXSG_cKVM",
                   "KRXSG_SystemBIOSElement: partial, SPFirmwareVPD, a reason",
                   "MINE_Fan: present, , ",
                   "KRXSG_cKVM: absent, SPFirmwareVPD, none here",
                   "KRXSG_SystemBIOSElement",
                   "  SourceNode = uint8 2",
                   "  TargetOperatingSystem = uint16 66",
                   "  LoadedEndingAddress = uint64 18446744073709551615",
                   "  PrimaryBIOS = boolean true",
                   "  ReleaseDate = datetime 20070315000000.000000+000",
                   "  Version = empty",
                   "  Mine = uint64 5",
                   "MINE_Fan",
                   "  Speed = uint64 4200",
                   "  Trend = string -1",
                   "  Share = string 0.5",
                   "  Ok = boolean false",
                   "  Name = string fan",
                   "  None = empty"}),
            linesOf(findings));
  ASSERT_EQ(1U, findings.result.collectors.size());
  EXPECT_FALSE(findings.result.collectors.front().hasAnswered);
  EXPECT_EQ("why", findings.result.collectors.front().reason);
}

TEST_F(FindingsOf, TheLastQueryOfAResultDocument) {
  const Findings findings = read("x", R"({
    "format": "vel-result/1", "machine": { "source": "file", "name": "srv1" },
    "plugin": { "name": "SPFirmwareVPD", "version": "1.0", "interface_version": "1.0", "type": 0 },
    "queries": [
      { "requested": ["KRXSG_cKVM"], "instances": [], "error": null },
      { "requested": ["KRXSG_Vpd", "KRXSG_cKVM"], "error": null, "core_log": [], "traffic": [ 5 ],
        "instances": [ { "class": "KRXSG_Vpd", "properties": {
          "Name": { "type": "string", "value": "\ufffdx", "bytes": "FF78" },
          "Slot": { "type": "", "value": null },
          "Fan": { "type": "uint8", "value": 7 } } } ] } ] })");
  EXPECT_FALSE(findings.tellsStates);
  EXPECT_EQ((Lines{"file: srv1, by SPFirmwareVPD", "asked: KRXSG_Vpd", "asked: KRXSG_cKVM",
                   "KRXSG_Vpd: present, , ", "KRXSG_cKVM: absent, , the file does not tell why",
                   "KRXSG_Vpd", "  Name = string FF78", "  Slot = empty", "  Fan = uint8 7"}),
            linesOf(findings));
}

TEST_F(FindingsOf, ARequestThatEndedInAnExceptionFailed) {
  EXPECT_EQ(
      (Lines{"file: srv1, by ", "asked: KRXSG_Vpd", "asked: KRXSG_cKVM", "KRXSG_Vpd: present, , ",
             "KRXSG_cKVM: failed, , the request ended in TVELException code 2: not served",
             "KRXSG_Vpd"}),
      lines(R"({ "format": "vel-result/1", "machine": { "source": "file", "name": "srv1" },
    "queries": [ { "requested": ["KRXSG_Vpd", "KRXSG_cKVM"],
      "instances": [ { "class": "KRXSG_Vpd", "properties": {} } ],
      "error": { "exception": "TVELException", "code": 2, "what": "not served" } } ] })"));
}

TEST_F(FindingsOf, PlainJsonIsNamedByItsFile) {
  const Findings findings =
      read("srv7.json",
           R"({ "KRXSG_Vpd": [ { "Name": "DIMM 1" }, {} ], "MINE_Fan": [], "KRXSG_cKVM": [] })");
  EXPECT_FALSE(findings.tellsStates);
  EXPECT_EQ(
      (Lines{"file: srv7.json, by ", "asked: KRXSG_Vpd", "asked: MINE_Fan", "asked: KRXSG_cKVM",
             "KRXSG_Vpd: present, , ", "MINE_Fan: absent, , the file does not tell why",
             "KRXSG_cKVM: absent, , the file does not tell why", "KRXSG_Vpd",
             "  Name = string DIMM 1", "KRXSG_Vpd"}),
      linesOf(findings));
  EXPECT_EQ((Lines{"file: some.json, by "}), lines("{}"));
}

// The collectors of the tests know no class of the firmware collector's.
TEST_F(FindingsOf, AMachineIsAskedForWhatAQueryAsksFor) {
  const Findings findings = read(
      "x", R"({ "format": "vel-machine/1", "name": "srv1", "machine_type": "5010", "smbios": {},
                     "collectors": ["DeviceInventory"],
                     "instances": { "KRXSG_IPMIFRU": [ { "FRUDeviceID": 3 } ] } })");
  EXPECT_TRUE(findings.tellsStates);
  EXPECT_EQ("srv1", findings.context.machineName);
  EXPECT_EQ("SPFirmwareVPD", findings.context.plugin.name);
  Lines asked = findings.result.requested;
  ASSERT_EQ(13U, asked.size());
  EXPECT_EQ("KRXSG_DiagnosticVPD", asked[0]);
  EXPECT_EQ("KRXSG_USBDevice", asked[11]);
  EXPECT_EQ("KRXSG_TapeDrive", asked[12]);
  EXPECT_EQ(State::kFailed, findings.result.states.front().state);
  ASSERT_EQ(2U, findings.result.instances.size());
  EXPECT_EQ("DeviceInventory 1", findings.result.instances[1].properties.front().second.ToString());
}

TEST_F(FindingsOf, ADumpIsAMachineOfItsFilesName) {
  // DSP0134: an entry point of version 3.0 (5.2.2) and the end-of-table structure (7.45).
  const char dump[] =
      "_SM3_\x2D\x18\x03\x00\x00\x01\x00\x06\x00\x00\x00\x20\x00\x00\x00\x00\x00\x00\x00"
      "\x00\x00\x00\x00\x00\x00\x00\x00\x7F\x04\x00\x00\x00\x00";
  const Findings findings = read("srv1.dmi", {dump, sizeof dump - 1});
  EXPECT_EQ("srv1.dmi", findings.context.machineName);
  EXPECT_EQ(11U, findings.result.states.size());
}

// What the formats write is what is read.
TEST_F(FindingsOf, ReadsWhatIsWritten) {
  QueryResult result;
  result.requested = {"KRXSG_SystemBIOSElement", "KRXSG_Vpd", "KRXSG_cKVM"};
  result.instances = {sampleBios(), sampleVpd("DIMM 1", "R4G72")};
  result.states = {{"KRXSG_SystemBIOSElement", "SPFirmwareVPD", State::kPresent, ""},
                   {"KRXSG_Vpd", "SPFirmwareVPD", State::kPartial, "slot 2 is empty"},
                   {"KRXSG_cKVM", "SPFirmwareVPD", State::kUnanswered, "the BMC did not"}};
  result.collectors = {{"SPFirmwareVPD", "1.0", true, ""}};
  const QueryContext context = sampleContext();
  const Findings inventory = read("x", inventoryText(context, result));
  EXPECT_EQ(inventoryText(context, result), inventoryText(inventory.context, inventory.result));

  ResultDocument document(context);
  document.add(result);
  const Findings traced = read("x", document.text());
  ResultDocument again(traced.context);
  again.add(traced.result);
  EXPECT_EQ(document.text(), again.text());
}

}  // namespace
}  // namespace velhost
