// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machinefile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

namespace velhost {
namespace {

using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::Bytes;
using NKRXVEL20::host::CimOperation;
using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SPKind;

MachineFile parse(const std::string& members) {
  return parseMachineFile(R"({ "format": "vel-machine/1", "name": "x")" + members + "}", "x.json");
}

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

TEST(MachineFile, WithoutSectionsThereIsNeitherSmbiosNorSp) {
  const MachineFile machine = parse("");
  EXPECT_EQ("x", machine.name);
  EXPECT_EQ("", machine.description);
  EXPECT_FALSE(machine.machineType);
  EXPECT_FALSE(machine.smbios);
  EXPECT_EQ(SPKind::kNone, machine.sp.kind);
  EXPECT_EQ(0, machine.sp.count);
  EXPECT_EQ(0, machine.sp.bmcNodes);
  EXPECT_TRUE(machine.instances.empty());
  EXPECT_TRUE(machine.missingClasses.empty());
  EXPECT_TRUE(machine.faults.empty());
}

TEST(MachineFile, CommentsAndTextsAreTaken) {
  const MachineFile machine = parse(R"(, /* no SP */ "description": "free text", // really
            "machine_type": "")");
  EXPECT_EQ("free text", machine.description);
  EXPECT_EQ("", machine.machineType);
}

TEST(MachineFile, ASchemaMayBeNamedForEditors) {
  EXPECT_EQ("x", parse(R"(, "$schema": "machine.schema.json")").name);
}

TEST(MachineFile, StructuresAreLaidOutAsTheStandardSays) {
  const MachineFile machine = parse(R"(, "smbios": { "load_status": 2, "end_status": 9,
    "structures": [
      { "type": 0, "handle": 513, "data": "01 02", "strings": ["Maker", "1.08"] },
      { "type": 11, "data": "02", "strings": ["one"], "status": 3 },
      { "type": 127 },
      { "raw": "0B 05", "status": -1 },
      { "raw": "" }
    ] })");
  ASSERT_TRUE(machine.smbios);
  EXPECT_EQ(2, machine.smbios->loadStatus);
  EXPECT_EQ(9, machine.smbios->endStatus);
  const struct {
    Bytes bytes;
    int status;
  } expected[] = {
      {{0, 6, 0x01, 0x02, 1, 2, 'M', 'a', 'k', 'e', 'r', 0, '1', '.', '0', '8', 0, 0}, 0},
      {{11, 5, 1, 0, 2, 'o', 'n', 'e', 0, 0}, 3},  // handle: its position
      {{127, 4, 2, 0, 0, 0}, 0},                   // an empty string set is two zero bytes
      {{0x0B, 0x05}, -1},
      {{}, 0},
  };
  ASSERT_EQ(std::size(expected), machine.smbios->structures.size());
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(expected[i].bytes, machine.smbios->structures[i].bytes) << i;
    EXPECT_EQ(expected[i].status, machine.smbios->structures[i].status) << i;
  }
}

TEST(MachineFile, AnSmbiosSectionByItselfIsAnEmptyTable) {
  const MachineFile machine = parse(R"(, "smbios": {})");
  ASSERT_TRUE(machine.smbios);
  EXPECT_EQ(0, machine.smbios->loadStatus);
  EXPECT_EQ(5, machine.smbios->endStatus);
  EXPECT_TRUE(machine.smbios->structures.empty());
}

TEST(MachineFile, TheLongestStructureHas255Bytes) {
  const MachineFile machine =
      parse(R"(, "smbios": { "structures": [ { "type": 1, "data": [ { "zeros": 251 } ] } ] })");
  EXPECT_EQ(255, machine.smbios->structures.at(0).bytes.at(1));
  EXPECT_EQ(257U, machine.smbios->structures.at(0).bytes.size());
}

TEST(MachineFile, AnSpHasItsDefaults) {
  const MachineFile machine = parse(R"(, "sp": { "kind": "dot-command" })");
  EXPECT_EQ(SPKind::kDotCommand, machine.sp.kind);
  EXPECT_TRUE(machine.sp.answers);
  EXPECT_EQ(1, machine.sp.count);
  EXPECT_EQ(0, machine.sp.bmcNodes);
  EXPECT_FALSE(machine.sp.bmc || machine.sp.ipmiDrivers || machine.sp.integratedBmc);
  EXPECT_FALSE(machine.sp.twgStop || machine.sp.tvmLibrary);
  EXPECT_TRUE(machine.sp.commandList);
  EXPECT_EQ(0, machine.sp.latency.count());
}

TEST(MachineFile, WithoutAKindThereIsNoSp) {
  const MachineFile machine = parse(R"(, "sp": { "bmc_nodes": 2 })");
  EXPECT_EQ(SPKind::kNone, machine.sp.kind);
  EXPECT_EQ(0, machine.sp.count);
  EXPECT_EQ(2, machine.sp.bmcNodes);
}

TEST(MachineFile, EverythingOfAnSpIsTaken) {
  const MachineFile machine = parse(R"(, "sp": { "kind": "tamber", "answers": false, "count": -3,
    "bmc_nodes": 255, "bmc": true, "ipmi_drivers": true, "integrated_bmc": true, "twg_stop": true,
    "tvm_library": true, "command_list": false, "latency_us": 250,
    "components": { "04 03 05 0B": 4, "0403050c": -1 } })");
  EXPECT_EQ(SPKind::kTamber, machine.sp.kind);
  EXPECT_FALSE(machine.sp.answers);
  EXPECT_EQ(-3, machine.sp.count);
  EXPECT_EQ(255, machine.sp.bmcNodes);
  EXPECT_TRUE(machine.sp.bmc && machine.sp.ipmiDrivers && machine.sp.integratedBmc);
  EXPECT_TRUE(machine.sp.twgStop && machine.sp.tvmLibrary);
  EXPECT_FALSE(machine.sp.commandList);
  EXPECT_EQ(250, machine.sp.latency.count());
  EXPECT_EQ((std::map<Bytes, std::int32_t>{{{4, 3, 5, 0x0B}, 4}, {{4, 3, 5, 0x0C}, -1}}),
            machine.sp.components);
}

void expectReplies(const std::vector<SimulatedReply>& expected,
                   const std::vector<SimulatedReply>& replies, const char* what) {
  ASSERT_EQ(expected.size(), replies.size()) << what;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].fails, replies[i].fails) << what << ' ' << i;
    EXPECT_EQ(expected[i].bytes, replies[i].bytes) << what << ' ' << i;
    EXPECT_EQ(expected[i].length, replies[i].length) << what << ' ' << i;
  }
}

TEST(MachineFile, DotCommandsHaveOneReplyOrSeveral) {
  const MachineFile machine = parse(R"(, "sp": { "dot_commands": [
    { "sp": 1, "command": "04 03 05 06 01", "reply": "42 55" },
    { "command": "", "data": "00 80", "length": -2147483648,
      "replies": ["fail", [{ "text": "P1", "size": 3 }]] },
    { "command": [{ "text": "A" }], "data": "", "fail": true } ] })");
  const auto& entries = machine.sp.dotCommands;
  ASSERT_EQ(3U, entries.size());
  EXPECT_EQ(1, entries[0].sp);
  EXPECT_EQ((Bytes{4, 3, 5, 6, 1}), entries[0].command);
  EXPECT_EQ(std::nullopt, entries[0].data);
  expectReplies({{false, {0x42, 0x55}, {}}}, entries[0].replies, "reply");
  EXPECT_EQ(0, entries[1].sp);
  EXPECT_EQ(Bytes{}, entries[1].command);
  EXPECT_EQ((Bytes{0, 0x80}), entries[1].data);
  expectReplies({{true, {}, INT32_MIN}, {false, {'P', '1', 0}, INT32_MIN}}, entries[1].replies,
                "replies");
  EXPECT_EQ(bytesOf("A"), entries[2].command);
  EXPECT_EQ(Bytes{}, entries[2].data);
  expectReplies({{true, {}, {}}}, entries[2].replies, "fail");
}

TEST(MachineFile, TamberAndIpmiCommandsAreTaken) {
  const MachineFile machine = parse(R"(, "sp": {
    "tamber_commands": [ { "command": "01 F1 F1 0F", "data": "07", "length": 300,
                           "reply": ["00 00 00", { "text": "YUOO73C" }] } ],
    "ipmi_commands": [ { "request": "01 20 06", "reply": "01 20 07 00 00" },
                       { "request": "", "fail": true } ] })");
  const auto& tamber = machine.sp.tamberCommands;
  ASSERT_EQ(1U, tamber.size());
  EXPECT_EQ((Bytes{0x01, 0xF1, 0xF1, 0x0F}), tamber[0].command);
  EXPECT_EQ(Bytes{7}, tamber[0].data);
  expectReplies({{false, {0, 0, 0, 'Y', 'U', 'O', 'O', '7', '3', 'C'}, 300}}, tamber[0].replies,
                "tamber");
  const auto& ipmi = machine.sp.ipmiCommands;
  ASSERT_EQ(2U, ipmi.size());
  EXPECT_EQ((Bytes{0x01, 0x20, 0x06}), ipmi[0].request);
  expectReplies({{false, {1, 0x20, 7, 0, 0}, {}}}, ipmi[0].replies, "ipmi");
  expectReplies({{true, {}, {}}}, ipmi[1].replies, "ipmi fail");
}

TEST(MachineFile, InstancesTakeTheTypesOfTheSchema) {
  const MachineFile machine = parse(R"(, "instances": {
    "KRXSG_USBDevice": [ { "Description": "KRX cKVM" }, {} ],
    "KRXSG_TapeDrive": [],
    "KRXSG_SystemBIOSElement": [ { "SourceNode": 255, "TargetOperatingSystem": 65535,
      "LoadedEndingAddress": 18446744073709551615, "PrimaryBIOS": true,
      "ReleaseDate": "20070315000000.000000+000" } ] })");
  ASSERT_EQ(3U, machine.instances.size());
  EXPECT_EQ("KRXSG_USBDevice", machine.instances[0].className);
  EXPECT_EQ((NKRXVEL20::host::PropertyList{{"Description", TCIMValue("KRX cKVM")}}),
            machine.instances[0].properties);
  EXPECT_TRUE(machine.instances[1].properties.empty());
  EXPECT_EQ((NKRXVEL20::host::PropertyList{
                {"SourceNode", TCIMValue(std::uint8_t{255})},
                {"TargetOperatingSystem", TCIMValue(std::uint16_t{65535})},
                {"LoadedEndingAddress", TCIMValue(std::uint64_t{18446744073709551615U})},
                {"PrimaryBIOS", TCIMValue(true)},
                {"ReleaseDate", TCIMValue(TCIMDateTime("20070315000000.000000+000"))}}),
            machine.instances[2].properties);
}

TEST(MachineFile, FaultsAndMissingClassesAreTaken) {
  const MachineFile machine = parse(R"(, "missing_classes": ["KRXSG_IPMIFRU", "KRXSG_Vpd"],
    "faults": [ { "operation": "set_property", "class": "KRXSG_Vpd", "property": "Vendor",
                  "nth": 1, "throw": "runtime_error" },
                { "operation": "get_property", "property": "Description" },
                { "operation": "add_to_class", "throw": "TVELException" } ])");
  EXPECT_EQ((std::vector<std::string>{"KRXSG_IPMIFRU", "KRXSG_Vpd"}), machine.missingClasses);
  ASSERT_EQ(3U, machine.faults.size());
  EXPECT_EQ(CimOperation::kSetProperty, machine.faults[0].operation);
  EXPECT_EQ("KRXSG_Vpd", machine.faults[0].className);
  EXPECT_EQ("Vendor", machine.faults[0].propertyName);
  EXPECT_EQ(1U, machine.faults[0].nth);
  EXPECT_TRUE(machine.faults[0].throwsRuntimeError);
  EXPECT_EQ(CimOperation::kGetProperty, machine.faults[1].operation);
  EXPECT_EQ("", machine.faults[1].className);
  EXPECT_EQ("Description", machine.faults[1].propertyName);
  EXPECT_EQ(std::nullopt, machine.faults[1].nth);
  EXPECT_EQ(CimOperation::kAddToClass, machine.faults[2].operation);
  EXPECT_FALSE(machine.faults[2].throwsRuntimeError);
}

// A 64-bit entry point (DSP0134, 5.2.2) and a table of one type-127 structure.
const Bytes kDump{'_', 'S', 'M', '3', '_', 0x2D, 24, 3, 0, 0, 1, 0, 6, 0,   0, 0, 32, 0, 0,
                  0,   0,   0,   0,   0,   0,    0,  0, 0, 0, 0, 0, 0, 127, 4, 0, 0,  0, 0};

class MachineFileFolder : public ::testing::Test {
 protected:
  MachineFileFolder() { std::filesystem::create_directories(folder_); }
  ~MachineFileFolder() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path put(const char* name, std::string_view bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return folder_ / name;
  }

  const std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                        ("velhost-machinefile-" + std::to_string(::getpid()));
};

TEST_F(MachineFileFolder, ADumpIsFoundBesideTheFile) {
  put("one.dmi", {reinterpret_cast<const char*>(kDump.data()), kDump.size()});
  const MachineFile machine =
      readMachineFile(put("one.json", R"({ "format": "vel-machine/1", "name": "x",
    "smbios": { "dump": "one.dmi", "end_status": 4 } })"));
  ASSERT_TRUE(machine.smbios);
  EXPECT_EQ(4, machine.smbios->endStatus);
  ASSERT_EQ(1U, machine.smbios->structures.size());
  EXPECT_EQ((Bytes{127, 4, 0, 0, 0, 0}), machine.smbios->structures[0].bytes);
}

TEST_F(MachineFileFolder, ADumpIsAMachineByItself) {
  const MachineFile machine =
      readMachineFile(put("one.dmi", {reinterpret_cast<const char*>(kDump.data()), kDump.size()}));
  EXPECT_EQ("one.dmi", machine.name);
  ASSERT_TRUE(machine.smbios);
  EXPECT_EQ(0, machine.smbios->loadStatus);
  EXPECT_EQ(5, machine.smbios->endStatus);
  ASSERT_EQ(1U, machine.smbios->structures.size());
  EXPECT_EQ((Bytes{127, 4, 0, 0, 0, 0}), machine.smbios->structures[0].bytes);
}

TEST_F(MachineFileFolder, WhatOnlyBeginsAsADumpIsRefused) {
  for (const char* const anchor : {"_SM_", "_SM3_", "_DMI_"}) {
    const std::filesystem::path file = put("cut.dmi", anchor);
    try {
      static_cast<void>(readMachineFile(file));
      ADD_FAILURE() << anchor << " is taken";
    } catch (const MachineFileError& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(file.string() + ": ")) << error.what();
      EXPECT_EQ(std::string::npos, std::string(error.what()).find("JSON")) << error.what();
    }
  }
}

}  // namespace
}  // namespace velhost
