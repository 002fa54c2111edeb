// SPDX-License-Identifier: Apache-2.0
#include "host/formats/tableformat.h"

#include <gtest/gtest.h>

#include "tests/host/resultsample.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;

TEST(TableFormat, NarrowInstancesAreALineEachAndWideOnesALineAProperty) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_SystemBIOSElement", "KRXSG_DeviceDriver"};
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
      "KRXSG_Vpd  (2 instances)\n"
      "  Name            PartNumber\n"
      "  DIMM 1          P1\n"
      "  Power Supply 2\n"
      "  partial: a slot is empty\n"
      "\n"
      "KRXSG_SystemBIOSElement  (1 instance)\n"
      "  Name:                   M\\xfcller\\n\n"
      "  Version:                1.08\n"
      "  SourceNode:             2\n"
      "  TargetOperatingSystem:  36\n"
      "  LoadedEndingAddress:    18446744073709551615\n"
      "  PrimaryBIOS:            true\n"
      "  ReleaseDate:            2007-03-15\n"
      "\n"
      "Without instances:\n"
      "  KRXSG_cKVM          unanswered  the BMC is silent\n"
      "  KRXSG_DeviceDriver  unused      nobody fills it\n"
      "  KRXSG_SystemBIOS    unused      as KRXSG_DeviceDriver\n",
      tableText(sampleContext(), result));
}

TEST(TableFormat, APropertyThatAnInstanceLacksIsABlankCell) {
  QueryResult result;
  result.requested = {"KRXSG_cKVM"};
  result.states = presentStates(result);
  result.instances = {{"KRXSG_cKVM", {{"Version", TCIMValue("1")}}},
                      {"KRXSG_cKVM", {{"FirmwareVersion", TCIMValue("2")}}}};
  QueryContext context = sampleContext();
  context.machineSource = "live";
  EXPECT_EQ(
      "SPFirmwareVPD 1.0 on a server (this machine)\n"
      "\n"
      "KRXSG_cKVM  (2 instances)\n"
      "  Version  FirmwareVersion\n"
      "  1\n"
      "           2\n",
      tableText(context, result));
}

TEST(TableFormat, BlankPropertiesAreLeftOut) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd", "KRXSG_cKVM"};
  result.states = presentStates(result);
  result.instances = {{"KRXSG_Vpd", {{"Vendor", TCIMValue("")}, {"FRUNumber", TCIMValue(" ")}}},
                      {"KRXSG_Vpd", {{"PartNumber", TCIMValue("P1")}}},
                      {"KRXSG_cKVM", {{"Version", TCIMValue("")}}}};
  EXPECT_EQ(
      "SPFirmwareVPD 1.0 on a server (machine file)\n"
      "\n"
      "KRXSG_Vpd  (2 instances)\n"
      "  PartNumber\n"
      "\n"
      "  P1\n"
      "\n"
      "KRXSG_cKVM  (1 instance)\n",
      tableText(sampleContext(), result));
}

TEST(TableFormat, SeveralWideInstancesStandSideBySideWhileTheyFit) {
  const std::string longText(30, 'v');
  QueryResult result;
  result.requested = {"KRXSG_cKVM"};
  result.states = presentStates(result);
  for (const char* const version : {"1", "2"}) {
    result.instances.push_back({"KRXSG_cKVM",
                                {{"Version", TCIMValue(version)},
                                 {"FirmwareVersion", TCIMValue(longText)},
                                 {"SoftwareElementID", TCIMValue(longText)},
                                 {"Location", TCIMValue("")},
                                 {"FileName", TCIMValue(longText)},
                                 {"Name", TCIMValue("cKVM")}}});
  }
  const std::string head = "SPFirmwareVPD 1.0 on a server (machine file)\n\n";
  EXPECT_EQ(
      head +
          "KRXSG_cKVM  (2 instances)\n"
          "  Name:               cKVM                            cKVM\n"
          "  Version:            1                               2\n"
          "  FirmwareVersion:    vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  SoftwareElementID:  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  FileName:           vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n",
      tableText(sampleContext(), result));

  for (auto& instance : result.instances)
    instance.properties[1].second = TCIMValue(longText + longText);
  EXPECT_EQ(
      head +
          "KRXSG_cKVM  (2 instances)\n"
          "  Name:               cKVM\n"
          "  Version:            1\n"
          "  FirmwareVersion:    vvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  SoftwareElementID:  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  FileName:           vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "\n"
          "  Name:               cKVM\n"
          "  Version:            2\n"
          "  FirmwareVersion:    vvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  SoftwareElementID:  vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n"
          "  FileName:           vvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\n",
      tableText(sampleContext(), result));
}

TEST(TableFormat, DatesAreShownAsPeopleWriteThem) {
  const struct {
    const char* cim;
    const char* shown;
  } cases[] = {
      {"20070315000000.000000+000", "2007-03-15"},
      {"20070315123059.000000+000", "2007-03-15 12:30:59"},
      {"20070315123059.000000+060", "20070315123059.000000+060"},
      {"20070315123059.000001+000", "20070315123059.000001+000"},
  };
  for (const auto& c : cases) {
    QueryResult result;
    result.requested = {"KRXSG_SystemBIOS"};
    result.states = presentStates(result);
    result.instances = {{"KRXSG_SystemBIOS", {{"ReleaseDate", TCIMValue(TCIMDateTime(c.cim))}}}};
    EXPECT_EQ(
        "SPFirmwareVPD 1.0 on a server (machine file)\n\n"
        "KRXSG_SystemBIOS  (1 instance)\n"
        "  ReleaseDate\n"
        "  " +
            std::string(c.shown) + "\n",
        tableText(sampleContext(), result));
  }
}

}  // namespace
}  // namespace velhost
