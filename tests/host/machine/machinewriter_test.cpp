// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machinewriter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velhost {
namespace {

constexpr char kBare[] = R"({
  "format": "vel-machine/1",
  "name": "x"
}
)";

TEST(MachineWriter, LeavesOutWhatIsDefault) {
  MachineFile machine;
  machine.name = "x";
  EXPECT_EQ(kBare, machineFileText(machine));
}

// Each text is read and written again; where no other is given it comes out as it was.
TEST(MachineWriter, WritesWhatTheReaderReads) {
  const struct {
    const char* what;
    const char* member;
    const char* written;
  } cases[] = {
      {"description", R"("description":"a \"b\" \u0001 ä")", nullptr},
      {"machine type", R"("machine_type":"")", nullptr},
      {"empty table", R"("smbios":{})", nullptr},
      {"statuses of the table", R"("smbios":{"load_status":-3,"end_status":7})", nullptr},
      {"structure",
       R"("smbios":{"structures":[{"type":0,"handle":7,"data":"01 FF","strings":["a","ä\t"]}]})",
       nullptr},
      {"structure without data and strings",
       R"("smbios":{"structures":[{"type":127,"handle":65535,"status":3}]})", nullptr},
      {"raw structures", R"("smbios":{"structures":[{"raw":""},{"raw":"0B 05 01","status":5}]})",
       nullptr},
      {"a raw structure that is whole",
       R"("smbios":{"structures":[{"raw":"0B 04 01 00 41 00 00"}]})",
       R"("smbios":{"structures":[{"type":11,"handle":1,"strings":["A"]}]})"},
      {"a string that is no UTF-8", R"("smbios":{"structures":[{"raw":"0B 04 01 00 FF 00 00"}]})",
       nullptr},
      {"handles that were left out", R"("smbios":{"structures":[{"type":1},{"type":2}]})",
       R"("smbios":{"structures":[{"type":1,"handle":0},{"type":2,"handle":1}]})"},
      {"an SP that is none", R"("sp":{"kind":"none"})", ""},
      {"an SP of defaults", R"("sp":{"kind":"dot-command"})",
       R"("sp":{"kind":"dot-command","count":1})"},
      {"every fact of an SP",
       R"("sp":{"kind":"tamber","count":-2,"bmc_nodes":3,"answers":false,"bmc":true,)"
       R"("ipmi_drivers":true,"integrated_bmc":true,"twg_stop":true,"tvm_library":true,)"
       R"("command_list":false,"components":{"04 03 05 0B":4,"04 03 05 0C":-1},"latency_us":5})",
       nullptr},
      {"service processors found where there are none", R"("sp":{"kind":"none","count":2})",
       nullptr},
      {"dot commands",
       R"("sp":{"kind":"dot-command","count":2,"dot_commands":[)"
       R"({"command":"04 03","reply":"","length":-1},)"
       R"({"sp":1,"command":"","data":"","replies":["fail","01 02"],"length":9},)"
       R"({"command":"05","data":"0A","fail":true}]})",
       nullptr},
      {"Tamber commands",
       R"("sp":{"kind":"tamber","count":1,"tamber_commands":[)"
       R"({"command":"01 F1 F1 0F","data":"05","reply":"00 00 00"},)"
       R"({"command":"01 F1 F1 0F","fail":true}]})",
       nullptr},
      {"IPMI commands",
       R"("sp":{"kind":"none","count":0,"ipmi_commands":[)"
       R"({"request":"01 20","reply":"01","length":3},{"request":"","fail":true}]})",
       nullptr},
      {"instances of every type",
       R"("instances":{"KRXSG_SystemBIOSElement":[{"Name":"ä","SourceNode":255,)"
       R"("TargetOperatingSystem":65535,"LoadedEndingAddress":18446744073709551615,)"
       R"("PrimaryBIOS":false,"ReleaseDate":"20090714000000.000000+000"},{}],)"
       R"("KRXSG_USBDevice":[{"Description":"KRX cKVM"}]})",
       nullptr},
      {"other collectors", R"("collectors":["DeviceInventory"])", nullptr},
      {"a class without instances", R"("instances":{"KRXSG_TapeDrive":[]})", nullptr},
      {"missing classes", R"("missing_classes":["KRXSG_Vpd","KRXSG_IPMIFRU"])", nullptr},
      {"faults",
       R"("faults":[{"operation":"get_class"},{"operation":"create_instance","class":"KRXSG_Vpd"},)"
       R"({"operation":"enumerate_instances","nth":4294967295},)"
       R"({"operation":"get_property","property":"Name","throw":"runtime_error"},)"
       R"({"operation":"set_property","class":"KRXSG_Vpd","property":"Vendor","nth":1},)"
       R"({"operation":"add_to_class"}])",
       nullptr},
  };
  for (const auto& c : cases) {
    const std::string head = R"({"format":"vel-machine/1","name":"x")";
    const auto document = [&](const std::string& member) {
      return member.empty() ? head + "}" : head + "," + member + "}";
    };
    const std::string text =
        machineFileText(parseMachineFile(document(c.member), std::filesystem::path("x.json")));
    EXPECT_EQ(document(c.written == nullptr ? c.member : c.written),
              nlohmann::ordered_json::parse(text).dump())
        << c.what;
    EXPECT_EQ(text, machineFileText(parseMachineFile(text, "x.json"))) << c.what;
  }
}

}  // namespace
}  // namespace velhost
