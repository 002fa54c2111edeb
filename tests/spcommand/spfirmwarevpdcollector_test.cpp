// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using ClassRecord = SPFirmwareVpd::ClassRecord;

constexpr char kMain[] = "KRXSG_SPROMFirmwareVPDMain";
constexpr char kBootRom[] = "KRXSG_SPROMFirmwareVPDBootROM";
constexpr char kHardware[] = "KRXSG_HardwareRevisionLevel";
constexpr char kDiagnostics[] = "KRXSG_DiagnosticVPD";

ClassRecord record(const char* className, const char* node, SPFirmwareVpd::PropertyMap more) {
  more.insert({{"TargetOperatingSystem", ""},
               {"SoftwareElementState", ""},
               {"SourceNode", node},
               {"SoftwareElementID", node}});
  return {{className, std::move(more)}};
}

ClassRecord filledDiagnostics(const char* node) {
  return record(kDiagnostics, node, {{"Version", ""}, {"BuildNumber", "DSYT42A"}, {"", "SIG"}});
}

ClassRecord emptyDiagnostics(const char* node) {
  return record(kDiagnostics, node, {{"Version", ""}, {"BuildNumber", ""}});
}

class SPFirmwareVpdCollectorTest : public PluginTest {
 protected:
  SPFirmwareVpdCollectorTest() {
    plugin.Init();
    useSP(dotCommandSP());
  }

  int collect() { return plugin.getSPFirmwareVpd(sp(), ns).status; }

  void addComputerSystem(std::uint8_t node, const char* description) {
    ns->addCompanion("KRXSG_QLA_ComputerSystem",
                     {{"SourceNode", TCIMValue(node)}, {"Description", TCIMValue(description)}});
  }

  // The failures that were logged.
  std::vector<std::string> failures() const {
    std::vector<std::string> result;
    for (const auto& [severity, entry] : log) {
      if (severity == 0) result.push_back(entry);
    }
    return result;
  }

  void failProperty(const char* operationClass, const char* property,
                    host::CimOperation operation) {
    useFaults({{.operation = operation,
                .className = operationClass,
                .propertyName = property,
                .nth = std::nullopt,
                .throwsRuntimeError = false}});
  }
};

TEST_F(SPFirmwareVpdCollectorTest, FirmwareInstanceIsNamedAfterTheSPAndItsNode) {
  plugin.parsedVpdRecords = {record(kMain, "1",
                                    {{"BuildDate", "20090714000000.000000+000"},
                                     {"BuildNumber", "YUOO73C"},
                                     {"Checksum", "200"},
                                     {"FileName", "SPMAIN.PKT"},
                                     {"PartNumber", "39Y12345"},
                                     {"Version", "12"}}),
                             record(kBootRom, "1", {{"BuildNumber", "YUBR18A"}})};
  addComputerSystem(1, "KRX Quellon Link Adapter II");
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances),
            (std::vector<Properties>{{"Name=Node 1 : KRX Quellon Link Adapter II Main VPD",
                                      "BuildDate=20090714000000.000000+000", "BuildNumber=YUOO73C",
                                      "Checksum=200", "FileName=SPMAIN.PKT", "PartNumber=39Y12345",
                                      "SoftwareElementID=1", "SoftwareElementState=3",
                                      "SourceNode=1", "TargetOperatingSystem=66", "Version=12"}}));
  EXPECT_EQ(published(plugin.spromBootRomInstances),
            (std::vector<Properties>{{"Name=Node 1 : KRX Quellon Link Adapter II BootROM VPD",
                                      "BuildNumber=YUBR18A", "SoftwareElementID=1",
                                      "SoftwareElementState=3", "SourceNode=1",
                                      "TargetOperatingSystem=66"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, InstancesWithoutANameOfTheirOwnGetTheNodeBeforeNothing) {
  plugin.parsedVpdRecords = {record(kHardware, "2", {{"Hardwarelevel", "7"}, {"Version", "7"}})};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.hardwareRevisionInstances),
            (std::vector<Properties>{{"Hardwarelevel=7", "SoftwareElementID=2",
                                      "SoftwareElementState=3", "Name=Node 2 : ", "SourceNode=2",
                                      "TargetOperatingSystem=66", "Version=7"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, SignatureTextNeverReachesAnInstance) {
  plugin.parsedVpdRecords = {filledDiagnostics("1")};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.diagnosticVpdInstances),
            (std::vector<Properties>{{"BuildNumber=DSYT42A", "SoftwareElementID=1",
                                      "SoftwareElementState=3", "Name=Node 1 : ", "SourceNode=1",
                                      "TargetOperatingSystem=66", "Version="}}));
  EXPECT_EQ(failures(), std::vector<std::string>{});
}

TEST_F(SPFirmwareVpdCollectorTest, EmptyStateAndSystemStillYieldThreeAnd66) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  collect();
  EXPECT_EQ(
      published(plugin.hardwareRevisionInstances),
      (std::vector<Properties>{{"SoftwareElementID=1", "SoftwareElementState=3",
                                "Name=Node 1 : ", "SourceNode=1", "TargetOperatingSystem=66"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, LowestNodeNumberNamesEverySPAndTheFirstOfANodeWins) {
  plugin.parsedVpdRecords = {record(kMain, "1", {}), record(kMain, "2", {})};
  addComputerSystem(7, "Seventh");
  addComputerSystem(2, "Second");
  addComputerSystem(2, "Second again");
  collect();
  const auto rows = published(plugin.spromMainInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "Name=Node 1 : Second Main VPD");
  EXPECT_EQ(rows[1][0], "Name=Node 2 : Second Main VPD");
}

TEST_F(SPFirmwareVpdCollectorTest, WithoutComputerSystemsSmbiosNamesTheSP) {
  plugin.parsedVpdRecords = {record(kMain, "1", {})};
  plugin.smbiosOemEntries = {{"KRX Torvik Management Processor", "x"}};
  collect();
  EXPECT_EQ(published(plugin.spromMainInstances).at(0).at(0),
            "Name=Node 1 : KRX Torvik Management Processor Main VPD");
}

TEST_F(SPFirmwareVpdCollectorTest, SecondCallReusesTheRecordsOfTheFirst) {
  SimulatedSP description = dotCommandSP();
  answer(description, {4, 3, 5, 6, 1}, zeros(40));
  answer(description, {4, 3, 5, 6, 2}, zeros(40));
  answer(description, {4, 3, 5, 7}, {7});
  answer(description, {4, 3, 5, 1, 1}, zeros(69));
  useSP(description);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(takeTraffic().size(), 4U);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
  EXPECT_EQ(plugin.spromMainInstances.size(), 2U);
}

TEST_F(SPFirmwareVpdCollectorTest, NoRecordAtAllIsAFailure) {
  EXPECT_EQ(collect(), 3);
  EXPECT_TRUE(plugin.parsedVpdRecords.empty());
}

TEST_F(SPFirmwareVpdCollectorTest, FilledThenEmptyDiagnosticsBothBecomeInstances) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {filledDiagnostics("1"), emptyDiagnostics("2")};
  collect();
  const auto rows = published(plugin.diagnosticVpdInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "BuildNumber=DSYT42A");
  EXPECT_EQ(rows[1][0], "BuildNumber=");
}

TEST_F(SPFirmwareVpdCollectorTest, EmptyThenFilledDiagnosticsFallBackForTheFirstOnly) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {emptyDiagnostics("1"), filledDiagnostics("2")};
  collect();
  const auto rows = published(plugin.diagnosticVpdInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "BuildNumber=KRXDiagnostics");  // from SMBIOS
  EXPECT_EQ(rows[1][0], "BuildNumber=DSYT42A");
}

TEST_F(SPFirmwareVpdCollectorTest, EachEmptyDiagnosticsRecordFallsBackAnew) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {emptyDiagnostics("1"), emptyDiagnostics("2")};
  collect();
  EXPECT_EQ(plugin.diagnosticVpdInstances.size(), 2U);
}

TEST_F(SPFirmwareVpdCollectorTest, EveryClassIsTracedForEveryRecord) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  collect();
  Log expected;
  for (std::size_t k = 0; k < 8; ++k) {
    expected.emplace_back(3, "IN getSPFirmwareVpd:: Current Class = " + plugin.classNames[k] +
                                 ". Current Iter = KRXSG_HardwareRevisionLevel");
  }
  EXPECT_EQ(log, expected);
}

TEST_F(SPFirmwareVpdCollectorTest, ClassThatIsNotThereAbandonsItsRecordOnly) {
  plugin.parsedVpdRecords = {record(kMain, "1", {}), record(kHardware, "1", {})};
  useFaults({}, {kMain});
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(failures(),
            (std::vector<std::string>{"Error adding Class KRXSG_SPROMFirmwareVPDMain"}));
  EXPECT_TRUE(plugin.spromMainInstances.empty());
  EXPECT_EQ(plugin.hardwareRevisionInstances.size(), 1U);
}

TEST_F(SPFirmwareVpdCollectorTest, RefusedPropertyAbandonsTheRecordAndIsNamed) {
  const struct {
    const char* what;
    const char* property;
    host::CimOperation operation;
    const char* failure;
  } cases[] = {
      {"the SP's name", "Name", host::CimOperation::kSetProperty, "Error adding SP Name property"},
      {"a text", "Checksum", host::CimOperation::kSetProperty, "Error adding Property Checksum"},
      {"the node", "SourceNode", host::CimOperation::kSetProperty,
       "Error adding Property SourceNode"},
      {"the name read for the node", "Name", host::CimOperation::kGetProperty,
       "Error adding Property SourceNode"},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {record(kMain, "1", {{"Checksum", "1"}, {"Version", "2"}})};
    failProperty(kMain, c.property, c.operation);
    log.clear();
    EXPECT_EQ(collect(), 0) << c.what;
    EXPECT_EQ(failures(), std::vector<std::string>{c.failure}) << c.what;
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << c.what;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, PropertyThatTheClassDoesNotHaveIsNamed) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {{"NoSuchProperty", "1"}})};
  collect();
  EXPECT_EQ(failures(), std::vector<std::string>{"Error adding Property NoSuchProperty"});
}

TEST_F(SPFirmwareVpdCollectorTest, MissingComputerSystemClassPasses) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  useFaults({}, {"KRXSG_QLA_ComputerSystem"});
  EXPECT_THROW(collect(), TVELException);
}

TEST_F(SPFirmwareVpdCollectorTest, RecordWithoutAClassBecomesNoInstance) {
  plugin.parsedVpdRecords = {record("", "1", {})};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(failures(), std::vector<std::string>{});
}

}  // namespace
}  // namespace spfirmwarevpd::test
