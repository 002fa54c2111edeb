// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

constexpr char kAmbrel[] = "KRX Ambrel Management Processor";
constexpr char kQuellon[] = "KRX Quellon Link Adapter";
constexpr char kTorvik[] = "KRX Torvik Management Processor";

Properties firmware(const std::string& build, const std::string& id, const std::string& name) {
  return {"Version= ",    "BuildNumber=" + build,   "SoftwareElementID=" + id,
          "Name=" + name, "SoftwareElementState=3", "TargetOperatingSystem=66"};
}

class SPFirmwareTest : public PluginTest {
 protected:
  int collect() { return plugin.getSPFirmware(ns).status; }
};

TEST_F(SPFirmwareTest, AllThreeKindsGiveThreeInstancesInOrder) {
  plugin.smbiosOemEntries = {{kTorvik, "t"}, {kQuellon, "q"}, {kAmbrel, "a"}};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances),
            (std::vector<Properties>{firmware("a", "1", kAmbrel), firmware("q", "2", kQuellon),
                                     firmware("t", "3", kTorvik)}));
  EXPECT_EQ(log, Log{});  // no version check on other machine types
}

TEST_F(SPFirmwareTest, OnlyTheFirstQuellonKeyGivesAnInstance) {
  plugin.smbiosOemEntries = {{"XX KRX Quellon Link Adapter R2 ", "later"}, {kQuellon, "first"}};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances),
            (std::vector<Properties>{firmware("first", "2", kQuellon)}));
}

TEST_F(SPFirmwareTest, AmbrelAndTorvikKeysMustBeEqual) {
  plugin.smbiosOemEntries = {{"The KRX Ambrel Management Processor", "a"},
                             {"KRX Torvik Management Processor 2", "t"}};
  EXPECT_EQ(collect(), 0);
  EXPECT_TRUE(plugin.spromMainInstances.empty());
}

TEST_F(SPFirmwareTest, NoSPInSmbiosIsNoFailure) { EXPECT_EQ(collect(), 0); }

TEST_F(SPFirmwareTest, BrennaLeavesOutAnSPWithTheAbsentBuild) {
  for (const char* machine : {"4210", "4215"}) {
    plugin.machineType = machine;
    plugin.smbiosOemEntries = {{kQuellon, "QuellonZPXN42BQD1"}};
    EXPECT_EQ(collect(), 0);
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << machine;
    EXPECT_EQ(takeLog(),
              (Log{{3, "This machine is a Brenna."},
                   {3, "The version string is:QuellonZPXN42BQD1.\nThe TempVersion is: .\n"},
                   {3, "The KRXSG_SPROMFirmwareVPDMain value is 'ZPXN42BQD'."}}))
        << machine;
  }
}

TEST_F(SPFirmwareTest, BrennaPublishesAnyOtherBuildBehindANoticeAtSeverity100) {
  plugin.machineType = "4210";
  plugin.smbiosOemEntries = {{kQuellon, "QuellonZPXN43A"}};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances),
            (std::vector<Properties>{firmware("QuellonZPXN43A", "2", kQuellon)}));
  EXPECT_EQ(log,
            (Log{{3, "This machine is a Brenna."},
                 {3, "The version string is:QuellonZPXN43A.\nThe TempVersion is: .\n"},
                 {100, "QLA will be shows in the logs, even if no QLA present in the system."}}));
}

TEST_F(SPFirmwareTest, MachineTypesAreComparedWhole) {
  for (const char* machine : {"", "4", "421", "210", "42100", "14210", "4210 4215", "4215X"}) {
    plugin.machineType = machine;
    plugin.spromMainInstances.clear();
    EXPECT_EQ(plugin.createSPFirmwareInstance(ns, kQuellon, "QuellonZPXN42BQD1", "2").status, 0);
    EXPECT_EQ(plugin.spromMainInstances.size(), 1U) << machine;
    EXPECT_EQ(takeLog(), Log{}) << machine;
  }
}

TEST_F(SPFirmwareTest, TemporaryVersionIsNineCharactersFromTheSecondBehindTheHyphen) {
  plugin.machineType = "4215";
  const struct {
    const char* versionText;
    const char* temporary;
  } cases[] = {
      {"AB-_123456789X", "123456789"},
      {"AB-_1234", "1234"},
      {"AB-_", ""},
      {"-_123", ""},
      {"AB-_1-_2", "1-_2"},
  };
  for (const auto& c : cases) {
    plugin.createSPFirmwareInstance(ns, kQuellon, c.versionText, "2");
    const Log entries = takeLog();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[1].second, std::string("The version string is:") + c.versionText +
                                     ".\nThe TempVersion is: " + c.temporary + ".\n");
  }
}

TEST_F(SPFirmwareTest, HyphenAtTheEndRaisesOutOfRange) {
  plugin.machineType = "4215";
  try {
    plugin.createSPFirmwareInstance(ns, kQuellon, "AB-", "2");
    FAIL() << "no exception";
  } catch (const std::out_of_range& e) {
    EXPECT_NE(std::string(e.what()).find("basic_string::substr"), std::string::npos) << e.what();
  }
  EXPECT_EQ(log, (Log{{3, "This machine is a Brenna."}}));  // said before the version is cut
}

TEST_F(SPFirmwareTest, EachRefusalIsLoggedAndDropsTheInstance) {
  const std::string prefix = "KRXSG_SPROMFirmwareVPDMain: Error adding ";
  for (const char* property : {"Version", "BuildNumber", "SoftwareElementID", "Name",
                               "SoftwareElementState", "TargetOperatingSystem"}) {
    refuseProperty(property);
    EXPECT_EQ(plugin.createSPFirmwareInstance(ns, kTorvik, "t", "3").status, 3) << property;
    EXPECT_EQ(takeLog(), (Log{{0, prefix + property}})) << property;
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << property;
  }
}

TEST_F(SPFirmwareTest, MissingClassIsLoggedForEachSP) {
  plugin.smbiosOemEntries = {{kTorvik, "t"}, {kAmbrel, "a"}};
  useFaults({}, {"KRXSG_SPROMFirmwareVPDMain"});
  EXPECT_EQ(collect(), 3);
  constexpr char kFailure[] =
      "KRXSG_SPROMFirmwareVPDMain: Error allocating instance KRXSG_SPROMFirmwareVPDMain";
  EXPECT_EQ(log, (Log{{0, kFailure}, {0, kFailure}}));
}

TEST_F(SPFirmwareTest, OneFailureIsReportedThoughTheNextSPSucceeds) {
  plugin.smbiosOemEntries = {{kTorvik, "t"}, {kAmbrel, "a"}};
  useFaults({{.operation = host::CimOperation::kCreateInstance,
              .className = {},
              .propertyName = {},
              .nth = 1,
              .throwsRuntimeError = false}});
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(plugin.spromMainInstances.size(), 1U);
}

}  // namespace
}  // namespace spfirmwarevpd::test
