// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

const Bytes kCommand = {4, 3, 5, 1, 1};

constexpr char kEntering[] = "Entering  SPFirmwareVpd::createDiagInstance";
constexpr char kLeaving[] = "Leaving  SPFirmwareVpd::createDiagInstance";

Properties fromSmbios(const std::string& build, const std::string& version) {
  return {"BuildNumber=" + build, "Version=" + version,
          "SoftwareElementID= ", "SoftwareElementState=3", "TargetOperatingSystem=66"};
}

class DiagnosticsTest : public PluginTest {
 protected:
  std::vector<Properties> collect() {
    EXPECT_EQ(plugin.getDiagsFirmware(ns, sp()).status, 0);
    return published(plugin.diagnosticVpdInstances);
  }
};

TEST_F(DiagnosticsTest, EmptyTableAndAnotherMachineTypeGiveNoInstance) {
  useSP(dotCommandSP(2));
  plugin.machineType = "5011";
  EXPECT_EQ(collect(), std::vector<Properties>{});
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(DiagnosticsTest, EntryIsPublishedWithItsValueUnchanged) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnosticsDSYT42A102"}};
  EXPECT_EQ(collect(), (std::vector<Properties>{fromSmbios("KRXDiagnosticsDSYT42A", "102")}));
  EXPECT_EQ(log, (Log{{3, kEntering}, {3, kLeaving}}));
}

TEST_F(DiagnosticsTest, OnlyEntriesThatNameTheDiagnosticsArePublished) {
  const struct {
    const char* key;
    bool isPublished;
  } cases[] = {
      {"KRX Diagnostics", true},
      {"My KRX Preboot Diagnostics 1", true},
      {"x $DS y", true},
      {"$DS", false},
      {"$DSx", false},
      {"KRX diagnostics", false},
      {"KRX Torvik Management Processor", false},
  };
  for (const auto& c : cases) {
    plugin.smbiosOemEntries = {{c.key, "value"}};
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(collect().size(), c.isPublished ? 1U : 0U) << c.key;
  }
}

TEST_F(DiagnosticsTest, DigitsBeforeTheValueInItsKeyAreAppended) {
  const struct {
    const char* what;
    const char* key;
    const char* value;
    const char* build;
    const char* version;
  } cases[] = {
      // "-" goes again before the text is split; 12B3 stands behind it.
      {"run with a letter inside", "A12B3$DS LEVEL", "LEVEL", "LEVEL12B", "3"},
      {"value holds the run already", "A12B3$DS LEVEL12B3", "LEVEL12B3", "LEVEL12B", "3"},
      {"no digit before it", "AB$DS LEVEL", "LEVEL", "LEVEL", ""},
      {"value at the start of the key", "LEVEL7 $DS ", "LEVEL7", "LEVEL", "7"},
      {"value not in the key", "A12B3$DS LEVEL", "OTHER", "OTHER", ""},
      {"empty value", "A12B3$DS LEVEL", "", "", ""},
      {"one digit", "9$DS LEVEL", "LEVEL", "LEVEL", "9"},
  };
  for (const auto& c : cases) {
    plugin.smbiosOemEntries = {{c.key, c.value}};
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(collect(), (std::vector<Properties>{fromSmbios(c.build, c.version)})) << c.what;
  }
}

TEST_F(DiagnosticsTest, VersionOfDigitsIsKeptAndOneWithALetterBecomesABlank) {
  const struct {
    const char* text;
    const char* build;
    const char* version;
  } cases[] = {
      {"1.02 [ABC]", "ABC", "102"},
      {"1a ABC", "ABC", " "},
      {"ABC", "ABC", ""},
      {"DIA789C12a", "DIA789C", " "},
  };
  for (const auto& c : cases) {
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(plugin.createDiagInstance(ns, c.text).status, 0);
    EXPECT_EQ(published(plugin.diagnosticVpdInstances),
              (std::vector<Properties>{fromSmbios(c.build, c.version)}))
        << c.text;
  }
}

TEST_F(DiagnosticsTest, EachRefusalOfATextIsLoggedAndTheNextEntryTried) {
  const struct {
    const char* property;
    const char* failure;
  } cases[] = {
      {"BuildNumber", "KRXSG_DiagnosticVPD: Error adding Build Number"},
      {"Version", "KRXSG_DiagnosticVPD: Error adding Version"},
      {"SoftwareElementID", "KRXSG_DiagnosticVPD: Error adding SoftwareElementID"},
      {"SoftwareElementState", "KRXSG_DiagnosticVPD: Error adding SoftwareElementState"},
      {"TargetOperatingSystem", "KRXSG_DiagnosticVPD: Error adding TargetOperatingSystem"},
  };
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "A1"}, {"KRX Preboot Diagnostics", "B2"}};
  for (const auto& c : cases) {
    refuseProperty(c.property);
    EXPECT_EQ(plugin.getDiagsFirmware(ns, sp()).status, 0);
    EXPECT_EQ(takeLog(), (Log{{3, kEntering}, {0, c.failure}, {3, kEntering}, {0, c.failure}}))
        << c.property;
    EXPECT_TRUE(plugin.diagnosticVpdInstances.empty()) << c.property;
  }
}

TEST_F(DiagnosticsTest, MissingClassIsLogged) {
  useFaults({}, {"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(plugin.createDiagInstance(ns, "A1").status, 3);
  EXPECT_EQ(log, (Log{{3, kEntering}, {0, "Error allocating instance KRXSG_DiagnosticVPD"}}));
}

class NodeDiagnosticsTest : public DiagnosticsTest {
 protected:
  NodeDiagnosticsTest() { plugin.machineType = "5010"; }

  static Bytes reply(const std::string& fileName = "DIAGS.IMG") {
    return joined({text("HD", 2), text("SIG", 3), text("L", 1), text("xxxxxxx", 7),
                   text("DSYT42A", 9), text("KQ1234X", 7), text("0123456789A", 11),
                   text("5010AC1", 7), text("xxxxxxxxx", 9), text(fileName, 12), text("9", 1)});
  }

  static Properties node(const std::string& number, const std::string& fileName = "DIAGS.IMG") {
    return {"Header=HD",
            "Signature=SIG",
            "Length=L",
            "BuildNumber=DSYT42A",
            "SerialNumber=KQ1234X",
            "UniqueID=0123456789A",
            "MachineTypeModel=5010AC1",
            "FileName=" + fileName,
            "Version=9",
            "SoftwareElementID=" + number,
            "SoftwareElementState=3",
            "TargetOperatingSystem=66",
            "SourceNode=" + number,
            "Name=Node " + number + " : Diagnostics"};
  }

  void useNodes(int count) {
    SimulatedSP description = dotCommandSP(count);
    for (int i = 0; i < count; ++i) answer(description, kCommand, reply(), i);
    useSP(description);
  }
};

TEST_F(NodeDiagnosticsTest, TwoSPsGiveAnInstanceANode) {
  useNodes(2);
  EXPECT_EQ(collect(), (std::vector<Properties>{node("1"), node("2")}));
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"0403050101 to SP 0", "0403050101 to SP 1"}));
}

TEST_F(NodeDiagnosticsTest, OneSPOrNoneGivesNoInstance) {
  for (const int count : {0, 1, -1}) {
    useNodes(count);
    EXPECT_EQ(collect(), std::vector<Properties>{}) << count;
    EXPECT_EQ(takeTraffic(), std::vector<std::string>{}) << count;
  }
}

TEST_F(NodeDiagnosticsTest, EveryListedMachineTypeIsAsked) {
  for (const char* machine : {"5010", "5020", "5030", "5040", "5050"}) {
    plugin.machineType = machine;
    useNodes(2);
    collect();
    EXPECT_EQ(takeTraffic().size(), 2U) << machine;
  }
}

TEST_F(NodeDiagnosticsTest, SilentSPIsNotAsked) {
  SimulatedSP description = dotCommandSP(2);
  description.answers = false;
  useSP(description);
  EXPECT_EQ(collect(), std::vector<Properties>{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(NodeDiagnosticsTest, NodeWithoutARecordIsSkippedSilently) {
  const struct {
    const char* what;
    Bytes reply;
  } cases[] = {
      {"zero through byte 68", joined({zeros(69), {1}})},
      {"empty reply", {}},
  };
  for (const auto& c : cases) {
    SimulatedSP description = dotCommandSP(3);
    answer(description, kCommand, c.reply, 0);  // nothing for SP 1: its send fails
    answer(description, kCommand, reply(), 2);
    useSP(description);
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(collect(), (std::vector<Properties>{node("3")})) << c.what;
    EXPECT_EQ(log, Log{}) << c.what;
  }
}

TEST_F(NodeDiagnosticsTest, LastByteAloneMakesARecord) {
  SimulatedSP description = dotCommandSP(2);
  answer(description, kCommand, joined({zeros(68), text("9", 1)}), 0);
  useSP(description);
  EXPECT_EQ(collect().size(), 1U);
}

TEST_F(NodeDiagnosticsTest, ZeroByteEndsAFieldEarly) {
  SimulatedSP description = dotCommandSP(2);
  answer(description, kCommand, reply(""), 0);
  answer(description, kCommand, reply(std::string("DI\0GS", 5)), 1);
  useSP(description);
  EXPECT_EQ(collect(), (std::vector<Properties>{node("1", ""), node("2", "DI")}));
}

TEST_F(NodeDiagnosticsTest, EachRefusalIsLoggedAndEndsTheNodes) {
  constexpr char kBuildNumber[] = "KRXSG_DiagnosticVPD: Error adding Build Number";
  const struct {
    const char* property;
    const char* failure;
  } cases[] = {
      {"Header", kBuildNumber},
      {"Signature", kBuildNumber},
      {"Length", kBuildNumber},
      {"BuildNumber", kBuildNumber},
      {"SerialNumber", "Error adding SerialNumber"},
      {"UniqueID", "Error adding UniqueID"},
      {"MachineTypeModel", "Error adding MachineTypeModel"},
      {"FileName", "Error adding FileName"},
      {"Version", "KRXSG_DiagnosticVPD: Error adding Version"},
      {"SoftwareElementID", "KRXSG_DiagnosticVPD: Error adding SoftwareElementID"},
      {"SoftwareElementState", "KRXSG_DiagnosticVPD: Error adding SoftwareElementState"},
      {"TargetOperatingSystem", "KRXSG_DiagnosticVPD: Error adding TargetOperatingSystem"},
      {"SourceNode", "Error adding Name"},
      {"Name", "Error adding Name"},
  };
  for (const auto& c : cases) {
    useNodes(2);
    refuseProperty(c.property);
    EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(ns, sp()).status, 3) << c.property;
    EXPECT_EQ(takeLog(), (Log{{0, c.failure}})) << c.property;
    EXPECT_TRUE(plugin.diagnosticVpdInstances.empty()) << c.property;
    EXPECT_EQ(takeTraffic().size(), 1U) << c.property;
  }
}

TEST_F(NodeDiagnosticsTest, MissingClassIsLoggedUnderAnotherName) {
  useNodes(2);
  useFaults({}, {"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(ns, sp()).status, 3);
  EXPECT_EQ(log, (Log{{0, "Error adding KRXSG_SystemBIOSElement class"}}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
