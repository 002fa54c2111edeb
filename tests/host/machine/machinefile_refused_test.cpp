// SPDX-License-Identifier: Apache-2.0
//
// What a machine file is refused for, and how that is said.
#include <gtest/gtest.h>

#include "host/machine/machinefile.h"

namespace velhost {
namespace {

struct RefusedCase {
  const char* document;
  const char* complaint;
};

std::string complaintAbout(const std::string& document) {
  try {
    parseMachineFile(document, "folder/m.json");
  } catch (const MachineFileError& error) {
    return error.what();
  }
  return "accepted";
}

template <std::size_t N>
void expectRefused(const RefusedCase (&cases)[N], const std::string& before,
                   const std::string& after) {
  for (const RefusedCase& c : cases) {
    EXPECT_EQ("folder/m.json: " + std::string(c.complaint),
              complaintAbout(before + c.document + after))
        << c.document;
  }
}

constexpr char kHead[] = R"({ "format": "vel-machine/1", "name": "x", )";

TEST(MachineFileRefused, Document) {
  const RefusedCase cases[] = {
      {"[]", "/: must be an object"},
      {"7", "/: must be an object"},
      {"{}", "/format: is missing"},
      {R"({ "name": "x" })", "/format: is missing"},
      {R"({ "format": "vel-machine/1" })", "/name: is missing"},
      {R"({ "format": "vel-machine/2", "nodes": [] })", "/format: must be \"vel-machine/1\""},
      {R"({ "format": 1, "name": "x" })", "/format: must be a text"},
      {R"({ "format": "vel-machine/1", "name": 5 })", "/name: must be a text"},
      {R"({ "format": "vel-machine/1", "name": "x", "name": "y" })",
       "/name: this key is given twice"},
  };
  expectRefused(cases, "", "");
}

// A "$schema" that is somewhere else, or no text, or beside a format, makes no JSON Schema.
TEST(MachineFileRefused, JsonSchemasAreTold) {
  const RefusedCase cases[] = {
      {R"({ "$schema": "https://json-schema.org/draft/2020-12/schema", "type": "object" })",
       "a JSON Schema, no machine file"},
      {R"({ "$schema": "http://json-schema.org/draft-07/schema#" })",
       "a JSON Schema, no machine file"},
      {R"({ "$schema": "json-schema.org" })", "/format: is missing"},
      {R"({ "$schema": 1 })", "/$schema: must be a text"},
      {R"({ "$schema": "https://json-schema.org/x", "format": "vel-machine/1" })",
       "/name: is missing"},
  };
  expectRefused(cases, "", "");
}

TEST(MachineFileRefused, TextThatIsNoJson) {
  EXPECT_EQ(0U, complaintAbout("{\n  \"format\": }").find("folder/m.json:2:13: "));
}

TEST(MachineFileRefused, TopLevelMembers) {
  const RefusedCase cases[] = {
      {R"("smbus": {})", "/smbus: unknown key; did you mean smbios?"},
      {R"("a/b~": {})", "/a~1b~0: unknown key"},
      {R"("": {})", "/: unknown key"},
      {R"("$schema": {})", "/$schema: must be a text"},
      {R"("description": null)", "/description: must be a text"},
      {R"("machine_type": 5010)", "/machine_type: must be a text"},
      {R"("smbios": null)", "/smbios: must be an object"},
      {R"("sp": "none")", "/sp: must be an object"},
      {R"("instances": [])", "/instances: must be an object"},
      {R"("instances": {"CIM_SoftwareElement": []})",
       "/instances/CIM_SoftwareElement: the class is abstract: it has no instances of its own"},
      {R"("missing_classes": {})", "/missing_classes: must be a list"},
      {R"("missing_classes": ["KRXSG_None"])",
       "/missing_classes/0: the schema has no class of this name"},
      {R"("missing_classes": ["krxsg_vpd"])",
       "/missing_classes/0: the schema has no class of this name; did you mean KRXSG_Vpd?"},
  };
  expectRefused(cases, kHead, "}");
}

TEST(MachineFileRefused, Smbios) {
  const RefusedCase cases[] = {
      {R"("end_status": 0)",
       "/smbios/end_status: must not be 0: a walk over the structures would "
       "never end"},
      {R"("end_status": "5")", "/smbios/end_status: must be an integer"},
      {R"("load_status": 2147483648)",
       "/smbios/load_status: must be from -2147483648 to 2147483647"},
      {R"("dump": "a.dmi", "structures": [])", "/smbios/structures: cannot stand beside \"dump\""},
      {R"("dump": "none.dmi")",
       "/smbios/dump: cannot read folder/none.dmi: No such file or directory"},
      {R"("dump": "a\u0000b")", "/smbios/dump: a zero byte would end the name"},
      {R"("dump": "/")", "/smbios/dump: cannot read /: it is a folder, not a regular file"},
      {R"("dump": 5)", "/smbios/dump: must be a text"},
      {"\"dump\": \"" MACHINES_DIR "/two-nodes.json\"",
       "/smbios/dump: " MACHINES_DIR
       "/two-nodes.json: it does not begin with an SMBIOS entry point "
       "(_SM3_, _SM_ or _DMI_)"},
      {R"("structures": {})", "/smbios/structures: must be a list"},
      {R"("table": "")", "/smbios/table: unknown key"},
  };
  expectRefused(cases, std::string(kHead) + R"("smbios": { )", "} }");
}

TEST(MachineFileRefused, Structures) {
  const RefusedCase cases[] = {
      {"5", "/smbios/structures/1: must be an object"},
      {R"({})", "/smbios/structures/1/type: is missing"},
      {R"({ "data": "01" })", "/smbios/structures/1/type: is missing"},
      {R"({ "type": 256 })", "/smbios/structures/1/type: must be from 0 to 255"},
      {R"({ "type": -1 })", "/smbios/structures/1/type: must be from 0 to 255"},
      {R"({ "type": 1, "handle": 65536 })", "/smbios/structures/1/handle: must be from 0 to 65535"},
      {R"({ "type": 1, "status": 1.5 })", "/smbios/structures/1/status: must be an integer"},
      {R"({ "type": 1, "data": "012" })",
       "/smbios/structures/1/data: the last hex pair has only one digit"},
      {R"({ "type": 1, "data": "0 1" })",
       "/smbios/structures/1/data: blank inside a hex pair at character 2"},
      {R"({ "type": 1, "data": [ { "zeros": 252 } ] })",
       "/smbios/structures/1/data: has 252 bytes; a structure holds no more than 251 behind its "
       "header"},
      {R"({ "type": 1, "strings": "a" })", "/smbios/structures/1/strings: must be a list"},
      {R"({ "type": 1, "strings": ["a", ""] })",
       "/smbios/structures/1/strings/1: an empty string would end the string set"},
      {R"({ "type": 1, "strings": ["a\u0000b"] })",
       "/smbios/structures/1/strings/0: a zero byte would end the string"},
      {R"({ "type": 1, "string": ["a"] })",
       "/smbios/structures/1/string: unknown key; did you mean strings?"},
      {R"({ "raw": "00", "type": 1 })",
       "/smbios/structures/1/type: cannot stand beside \"raw\", which is the whole structure"},
      {R"({ "raw": "00", "strings": [] })",
       "/smbios/structures/1/strings: cannot stand beside \"raw\", which is the whole structure"},
      {R"({ "raw": "0" })", "/smbios/structures/1/raw: the last hex pair has only one digit"},
  };
  expectRefused(cases, std::string(kHead) + R"("smbios": { "structures": [ { "type": 0 }, )",
                "] } }");
}

TEST(MachineFileRefused, Sp) {
  const RefusedCase cases[] = {
      {R"("kind": "bmc")", "/sp/kind: must be one of \"dot-command\", \"tamber\", \"none\""},
      {R"("answers": 1)", "/sp/answers: must be true or false"},
      {R"("count": 256)", "/sp/count: must be from -2147483648 to 255"},
      {R"("bmc_nodes": 256)", "/sp/bmc_nodes: must be from 0 to 255"},
      {R"("bmc_nodes": -1)", "/sp/bmc_nodes: must be from 0 to 255"},
      {R"("latency_us": -1)", "/sp/latency_us: must be from 0 to 60000000"},
      {R"("components": [])", "/sp/components: must be an object"},
      {R"("components": { "04 03 05": 1 })", "/sp/components/04 03 05: the key must be four bytes"},
      {R"("components": { "04 03 05 0": 1 })",
       "/sp/components/04 03 05 0: the last hex pair has only one digit"},
      {R"("components": { "04 03 05 0B": 1, "0403050b": 2 })",
       "/sp/components/0403050b: the same component is given above, spaced otherwise"},
      {R"("components": { "0403050B": true })", "/sp/components/0403050B: must be an integer"},
      {R"("components": { "04 03 05 0B": 1025 })",
       "/sp/components/04 03 05 0B: must be from -2147483648 to 1024"},
      {R"("components": { "04 03 05 0B": 2147483647 })",
       "/sp/components/04 03 05 0B: must be from -2147483648 to 1024"},
      {R"("count": 255, "components": { "04 03 05 0B": 1024, "04 03 05 0C": 5 })",
       "/sp/components: its counts, for each of the 255 SPs, come to more than 262144"},
      {R"("components": { "04 03 05 0B": 5, "04 03 05 0C": 1024 }, "count": 255)",
       "/sp/components: its counts, for each of the 255 SPs, come to more than 262144"},
      {R"("latency_us": 60000001)", "/sp/latency_us: must be from 0 to 60000000"},
      {R"("nodes": 1)", "/sp/nodes: unknown key; did you mean bmc_nodes?"},
  };
  expectRefused(cases, std::string(kHead) + R"("sp": { )", "} }");
}

TEST(MachineFileRefused, DotCommands) {
  const RefusedCase cases[] = {
      {"{}", "/sp/dot_commands/0/command: is missing"},
      {R"({ "reply": "00" })", "/sp/dot_commands/0/command: is missing"},
      {R"({ "command": "04" })",
       "/sp/dot_commands/0: the command has no answer: \"reply\", \"replies\" or \"fail\""},
      {R"({ "command": "04", "replies": [] })", "/sp/dot_commands/0/replies: has no reply"},
      {R"({ "command": "04", "reply": "00", "replies": ["00"] })",
       "/sp/dot_commands/0/replies: cannot stand beside \"reply\""},
      {R"({ "command": "04", "reply": "00", "fail": true })",
       "/sp/dot_commands/0/fail: cannot stand beside \"reply\""},
      {R"({ "command": "04", "fail": false })",
       "/sp/dot_commands/0/fail: can only be true; leave it out for a command that is answered"},
      {R"({ "command": "04", "reply": "fail" })",
       "/sp/dot_commands/0/reply: character 3 is no hex digit: \"i\""},
      {R"({ "command": "04", "replies": ["00", "failed"] })",
       "/sp/dot_commands/0/replies/1: character 3 is no hex digit: \"i\""},
      {R"({ "command": "04", "reply": "00", "length": 2147483648 })",
       "/sp/dot_commands/0/length: must be from -2147483648 to 2147483647"},
      {R"({ "command": "04", "reply": "00", "sp": "0" })",
       "/sp/dot_commands/0/sp: must be an integer"},
      {R"({ "command": "04", "reply": [ { "text": "P12", "size": 2 } ] })",
       "/sp/dot_commands/0/reply/0/text: has 3 bytes, more than its size of 2"},
      {R"({ "request": "04", "reply": "00" })", "/sp/dot_commands/0/request: unknown key"},
  };
  expectRefused(cases, std::string(kHead) + R"("sp": { "dot_commands": [ )", "] } }");
}

TEST(MachineFileRefused, TamberAndIpmiCommands) {
  const RefusedCase cases[] = {
      {R"("tamber_commands": [ { "command": "01 F1 F1", "reply": "00" } ])",
       "/sp/tamber_commands/0/command: must be four bytes"},
      {R"("tamber_commands": [ { "command": "01 F1 F1 0F" } ])",
       "/sp/tamber_commands/0: the command has no answer: \"reply\", \"replies\" or \"fail\""},
      {R"("tamber_commands": [ { "sp": 0, "command": "01 F1 F1 0F", "reply": "00" } ])",
       "/sp/tamber_commands/0/sp: unknown key"},
      {R"("ipmi_commands": [ { "request": "01", "data": "", "reply": "00" } ])",
       "/sp/ipmi_commands/0/data: unknown key"},
      {R"("ipmi_commands": [ { "reply": "00" } ])", "/sp/ipmi_commands/0/request: is missing"},
      {R"("ipmi_commands": [ { "request": "01", "reply": "00", "fail": true } ])",
       "/sp/ipmi_commands/0/fail: cannot stand beside \"reply\""},
      {R"("ipmi_commands": { "request": "01" })", "/sp/ipmi_commands: must be a list"},
  };
  expectRefused(cases, std::string(kHead) + R"("sp": { )", "} }");
}

TEST(MachineFileRefused, Instances) {
  const RefusedCase cases[] = {
      {R"("KRXSG_None": [])", "/instances/KRXSG_None: the schema has no class of this name"},
      {R"("KRXSG_USBDevice": {})", "/instances/KRXSG_USBDevice: must be a list"},
      {R"("KRXSG_USBDevice": [ "x" ])", "/instances/KRXSG_USBDevice/0: must be an object"},
      {R"("KRXSG_USBDevice": [ {}, { "Colour": "red" } ])",
       "/instances/KRXSG_USBDevice/1/Colour: KRXSG_USBDevice has no property of this name"},
      {R"("KRXSG_USBDevice": [ { "DeviceId": "U" } ])",
       "/instances/KRXSG_USBDevice/0/DeviceId: KRXSG_USBDevice has no property of this name; "
       "did you mean DeviceID?"},
      {R"("KRXSG_USBDevice": [ { "Description": null } ])",
       "/instances/KRXSG_USBDevice/0/Description: must be a text"},
      {R"("KRXSG_USBDevice": [ { "Description": 5 } ])",
       "/instances/KRXSG_USBDevice/0/Description: must be a text"},
      {R"("KRXSG_QLA_ComputerSystem": [ { "SourceNode": 256 } ])",
       "/instances/KRXSG_QLA_ComputerSystem/0/SourceNode: must be from 0 to 255"},
      {R"("KRXSG_QLA_ComputerSystem": [ { "SourceNode": "1" } ])",
       "/instances/KRXSG_QLA_ComputerSystem/0/SourceNode: must be an integer"},
      {R"("KRXSG_SystemBIOSElement": [ { "TargetOperatingSystem": 65536 } ])",
       "/instances/KRXSG_SystemBIOSElement/0/TargetOperatingSystem: must be from 0 to 65535"},
      {R"("KRXSG_SystemBIOSElement": [ { "LoadedEndingAddress": -1 } ])",
       "/instances/KRXSG_SystemBIOSElement/0/LoadedEndingAddress: must be from 0 to "
       "18446744073709551615"},
      {R"("KRXSG_SystemBIOSElement": [ { "PrimaryBIOS": "true" } ])",
       "/instances/KRXSG_SystemBIOSElement/0/PrimaryBIOS: must be true or false"},
      {R"("KRXSG_SystemBIOSElement": [ { "ReleaseDate": "2007-03-15" } ])",
       "/instances/KRXSG_SystemBIOSElement/0/ReleaseDate: must be a CIM date-time such as "
       "20090714000000.000000+000"},
  };
  expectRefused(cases, std::string(kHead) + R"("instances": { )", "} }");
}

TEST(MachineFileRefused, Faults) {
  const RefusedCase cases[] = {
      {"{}", "/faults/0/operation: is missing"},
      {R"({ "operation": "delete" })",
       "/faults/0/operation: must be one of \"get_class\", \"create_instance\", "
       "\"enumerate_instances\", \"get_property\", \"set_property\", \"add_to_class\""},
      {R"({ "operation": "get_class", "class": "KRXSG_None" })",
       "/faults/0/class: the schema has no class of this name"},
      {R"({ "operation": "get_class", "property": "Name" })",
       "/faults/0/property: the operation has no property"},
      {R"({ "operation": "add_to_class", "class": "KRXSG_Vpd", "property": "Name" })",
       "/faults/0/property: the operation has no property"},
      {R"({ "operation": "set_property", "class": "KRXSG_Vpd", "property": "Colour" })",
       "/faults/0/property: KRXSG_Vpd has no property of this name"},
      {R"({ "operation": "set_property", "property": "Colour" })",
       "/faults/0/property: no class has a property of this name"},
      {R"({ "operation": "get_class", "nth": 0 })", "/faults/0/nth: must be from 1 to 4294967295"},
      {R"({ "operation": "get_class", "nth": -1 })", "/faults/0/nth: must be from 1 to 4294967295"},
      {R"({ "operation": "get_class", "throw": "std::runtime_error" })",
       "/faults/0/throw: must be one of \"TVELException\", \"runtime_error\""},
      {R"({ "operation": "get_class", "when": 1 })", "/faults/0/when: unknown key"},
  };
  expectRefused(cases, std::string(kHead) + R"("faults": [ )", "] }");
}

}  // namespace
}  // namespace velhost
