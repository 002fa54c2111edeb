// SPDX-License-Identifier: Apache-2.0
#include "host/formats/tableformat.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

constexpr char kHead[] = "SPFirmwareVPD 1.0 on a server (machine file)\n\n";

std::string tableOf(const QueryResult& result, const TableOptions& options = {}) {
  return tableText(sampleContext(), result, options);
}

// A component of a node, or of no particular one (0).
PropertyList component(unsigned node, const std::string& name, const char* part, const char* slot) {
  const std::string label = node == 0 ? "" : "Node " + std::to_string(node) + ": ";
  return {{"Name", TCIMValue(label + name)},
          {"PartNumber", TCIMValue(part)},
          {"SlotNumber", TCIMValue(slot)}};
}

TEST(TableFormat, ALineAnInstanceAndAReasonForEachGap) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd",          "KRXSG_cKVM",       "KRXSG_SystemBIOSElement",
                      "KRXSG_DeviceDriver", "KRXSG_SystemBIOS", "KRXSG_cKVM"};
  result.instances = {sampleBios(), sampleVpd("DIMM 1", "P1"), sampleVpd("Power Supply 2", "")};
  result.states = {{"KRXSG_Vpd", "", State::kPartial, "a slot is empty"},
                   {"KRXSG_cKVM", "", State::kUnanswered, "the BMC is silent"},
                   {"KRXSG_SystemBIOSElement", "", State::kPresent, ""},
                   {"KRXSG_DeviceDriver", "", State::kUnused, "nobody fills it"},
                   {"KRXSG_SystemBIOS", "", State::kUnused, "nobody fills it"},
                   {"KRXSG_cKVM", "", State::kUnanswered, "the BMC is silent"}};
  EXPECT_EQ(
      "SPFirmwareVPD 1.0 on a server (machine file)\n"
      "\n"
      "KRXSG_Vpd  (2 instances)  Vital product data of a component\n"
      "  Name            PartNumber\n"
      "  DIMM 1          P1\n"
      "  Power Supply 2\n"
      "  partial:  a slot is empty\n"
      "\n"
      "KRXSG_SystemBIOSElement  (1 instance)  System BIOS or UEFI firmware, by node\n"
      "  Node:                 2\n"
      "  Name:                 M\\xfcller\\n\n"
      "  Version:              1.08\n"
      "  ReleaseDate:          2007-03-15\n"
      "  LoadedEndingAddress:  0xFFFFFFFFFFFFFFFF\n"
      "\n"
      "Without instances:\n"
      "  KRXSG_cKVM          unanswered  the BMC is silent\n"
      "  KRXSG_DeviceDriver  unused      nobody fills it\n"
      "  KRXSG_SystemBIOS    unused      as KRXSG_DeviceDriver\n",
      tableOf(result));
}

TEST(TableFormat, InstancesOfANodeStandTogether) {
  const QueryResult result =
      resultOf("KRXSG_Vpd", {component(2, "DIMM 3", "P3", " "), component(1, "DIMM 1", "P1", " "),
                             component(0, "Planar", "P0", " "), component(2, "Planar", "P4", " "),
                             component(1, "Power Supply 1", "P2", " ")});
  EXPECT_EQ(kHead + std::string("KRXSG_Vpd  (5 instances)  Vital product data of a component\n"
                                "  Node  Name            PartNumber\n"
                                "        Planar          P0\n"
                                "  1     DIMM 1          P1\n"
                                "        Power Supply 1  P2\n"
                                "  2     DIMM 3          P3\n"
                                "        Planar          P4\n"),
            tableOf(result));
}

TEST(TableFormat, ASingleNodeIsNotShown) {
  const QueryResult result =
      resultOf("KRXSG_Vpd", {component(1, "DIMM 1", "P1", " "), component(1, "DIMM 2", "P2", " ")});
  EXPECT_EQ(kHead + std::string("KRXSG_Vpd  (2 instances)  Vital product data of a component\n"
                                "  Name    PartNumber\n"
                                "  DIMM 1  P1\n"
                                "  DIMM 2  P2\n"),
            tableOf(result));
}

TEST(TableFormat, WhatHasNoRoomIsLeftToWide) {
  const QueryResult result =
      resultOf("KRXSG_Vpd", {component(0, "DIMM 1", "PART-NUMBER-1", "1"),
                             component(0, "A backplane for many disks", "PART-NUMBER-2", "2")});
  EXPECT_EQ(
      "SPFirmwareVPD 1.0 on a server\n"
      "(machine file)\n"
      "\n"
      "KRXSG_Vpd  (2 instances)\n"
      "  Name            PartNumber\n"
      "  DIMM 1          PART-...ER-1\n"
      "  A back...disks  PART-...ER-2\n"
      "\n"
      "--wide shows more properties,\n"
      "and so does a class that is\n"
      "named.\n",
      tableOf(result, {.screen = {.width = 30}}));
}

TEST(TableFormat, AllPropertiesAreALineIfTheyFit) {
  const QueryResult result =
      resultOf("KRXSG_Vpd", {component(1, "DIMM 1", "P1", "1"), component(2, "DIMM 2", "P2", "1")});
  EXPECT_EQ(kHead + std::string("KRXSG_Vpd  (2 instances)  Vital product data of a component\n"
                                "  Name            SlotNumber  PartNumber\n"
                                "  Node 1: DIMM 1  1           P1\n"
                                "  Node 2: DIMM 2  1           P2\n"),
            tableOf(result, {.hasAllProperties = true}));
}

TEST(TableFormat, OtherwiseInstancesStandSideBySideWhileTheyFit) {
  const std::string longText(30, 'v');
  QueryResult result = resultOf("KRXSG_cKVM", {});
  for (const char* const version : {"1", "2", "3"}) {
    result.instances.push_back({"KRXSG_cKVM",
                                {{"Version", TCIMValue(version)},
                                 {"FirmwareVersion", TCIMValue(std::string(25, 'v'))},
                                 {"SoftwareElementState", TCIMValue(std::uint16_t{3})}}});
  }
  result.instances.back().properties.emplace_back("FileName", TCIMValue(std::string(90, 'f')));
  EXPECT_EQ(
      kHead +
          std::string(
              "KRXSG_cKVM  (3 instances)  Firmware of the cKVM device\n"
              "  Version:               1                          2\n"
              "  FirmwareVersion:       vvvvvvvvvvvvvvvvvvvvvvvvv  vvvvvvvvvvvvvvvvvvvvvvvvv\n"
              "  SoftwareElementState:  Running                    Running\n"
              "\n"
              "  Version:               3\n"
              "  FirmwareVersion:       vvvvvvvvvvvvvvvvvvvvvvvvv\n"
              "  FileName:              fffffffffffffffffffffffffffffffffffffffffffffffffffffff\n"
              "                         fffffffffffffffffffffffffffffffffff\n"
              "  SoftwareElementState:  Running\n"),
      tableOf(result, {.hasAllProperties = true}));
}

TEST(TableFormat, AnInstanceThatSaysNothingHasALineToo) {
  const PropertyList nothing{{"Version", TCIMValue("")}};
  const std::string one = "KRXSG_cKVM  (1 instance)  Firmware of the cKVM device\n  -\n";
  const std::string two = "KRXSG_cKVM  (2 instances)  Firmware of the cKVM device\n";
  for (const bool hasAll : {false, true}) {
    EXPECT_EQ(kHead + one,
              tableOf(resultOf("KRXSG_cKVM", {nothing}), {.hasAllProperties = hasAll}));
  }
  EXPECT_EQ(kHead + two + "  -\n  -\n", tableOf(resultOf("KRXSG_cKVM", {nothing, nothing})));
  EXPECT_EQ(kHead + two + "  Version\n  -\n  1\n",
            tableOf(resultOf("KRXSG_cKVM", {nothing, {{"Version", TCIMValue("1")}}})));
}

TEST(TableFormat, AReasonIsToldOnce) {
  QueryResult result = sampleResult();
  result.states[0].state = State::kPartial;
  result.states[0].reason = result.states[1].reason = "the SP is silent";
  result.states[2] = {"KRXSG_cKVM", "", State::kUnanswered, "the SP is silent"};
  const std::string text = tableOf(result);
  EXPECT_NE(std::string::npos, text.find("KRE104C\n"
                                         "  all:  Name UEFI\n"
                                         "  partial:  the SP is silent\n"))
      << text;
  EXPECT_NE(std::string::npos, text.find("  partial:  as KRXSG_SystemBIOSElement\n")) << text;
  EXPECT_NE(std::string::npos, text.find("  KRXSG_cKVM          unanswered  the SP is silent\n"))
      << text;
}

TEST(TableFormat, HeadsAreBoldAndTroubleIsRed) {
  QueryResult result =
      resultOf("KRXSG_Vpd", {component(0, "DIMM 1", "P1", ""), component(0, "DIMM 2", "P2", "")});
  result.states[0].state = State::kPartial;
  result.states[0].reason = "a slot is empty";
  result.requested.emplace_back("KRXSG_cKVM");
  result.requested.emplace_back("KRXSG_DeviceDriver");
  result.states.push_back({"KRXSG_cKVM", "", State::kUnanswered, "the BMC is silent"});
  result.states.push_back({"KRXSG_DeviceDriver", "", State::kUnused, "nobody fills it"});
  EXPECT_EQ(
      kHead +
          std::string("\x1B[1mKRXSG_Vpd\x1B[0m  (2 instances)  Vital product data of a component\n"
                      "  \x1B[1mName    PartNumber\x1B[0m\n"
                      "  DIMM 1  P1\n"
                      "  DIMM 2  P2\n"
                      "  \x1B[33mpartial:\x1B[0m  a slot is empty\n"
                      "\n"
                      "\x1B[1mWithout instances:\x1B[0m\n"
                      "  KRXSG_cKVM          \x1B[31munanswered\x1B[0m  the BMC is silent\n"
                      "  KRXSG_DeviceDriver  unused      nobody fills it\n"),
      tableOf(result, {.screen = {.hasColour = true}}));
}

TEST(TableFormat, TheLiveMachineIsThisOne) {
  QueryContext context = sampleContext();
  context.machineSource = "live";
  context.machineName = "srv\x1B[1m";
  EXPECT_EQ("SPFirmwareVPD 1.0 on srv\\x1b[1m (this machine)\n\n",
            tableText(context, QueryResult(), {}));
}

}  // namespace
}  // namespace velhost
