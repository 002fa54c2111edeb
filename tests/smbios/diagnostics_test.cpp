// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/nullhandles.h"
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {

using namespace collector::test;
namespace {

using namespace NKRXVEL20;

const Bytes kCommand = {4, 3, 5, 1, 1};

constexpr int kBufferSize = 2048;

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

TEST_F(NodeDiagnosticsTest, MachineTypeThatOnlyHoldsAListedOneIsNotAsked) {
  for (const char* machine : {"50101", "15010", "5050AC1", " 5010", "501", ""}) {
    plugin.machineType = machine;
    useNodes(2);
    EXPECT_EQ(collect(), std::vector<Properties>{}) << machine;
    EXPECT_EQ(takeTraffic(), std::vector<std::string>{}) << machine;
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

TEST_F(NodeDiagnosticsTest, FieldsMayFillTheirPlaces) {
  SimulatedSP description = dotCommandSP(2);
  answer(description, kCommand,
         joined({text("HD", 2), text("SIG", 3), text("L", 1), text("xxxxxxx", 7),
                 text("DSYT42ABC", 9), text("KQ1234X", 7), text("0123456789A", 11),
                 text("5010AC1", 7), text("xxxxxxxxx", 9), text("DIAGSVPD.IMG", 12), text("9", 1)}),
         0);
  useSP(description);
  Properties expected = node("1", "DIAGSVPD.IMG");
  expected[3] = "BuildNumber=DSYT42ABC";
  EXPECT_EQ(collect(), (std::vector<Properties>{expected}));
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

TEST_F(NodeDiagnosticsTest, EveryEndWithoutARefusalIsANormalOne) {
  SimulatedSP silent = dotCommandSP(2);
  silent.answers = false;
  SimulatedSP half = dotCommandSP(2);
  answer(half, kCommand, reply(), 1);
  const struct {
    const char* what;
    SimulatedSP sp;
    std::size_t instances;
  } cases[] = {
      {"no SP", {}, 0},
      {"silent SP", silent, 0},
      {"one SP", dotCommandSP(1), 0},
      {"negative number of SPs", dotCommandSP(-1), 0},
      {"no node with a record", dotCommandSP(2), 0},
      {"one node with a record", half, 1},
  };
  for (const auto& c : cases) {
    useSP(c.sp);
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(ns, sp()).status, 0) << c.what;
    EXPECT_EQ(plugin.diagnosticVpdInstances.size(), c.instances) << c.what;
    EXPECT_EQ(log, Log{}) << c.what;
  }
}

TEST_F(NodeDiagnosticsTest, NothingOfAnEarlierNodeShowsInALaterOne) {
  SimulatedSP description = dotCommandSP(2);
  answer(description, kCommand, reply(), 0);
  answer(description, kCommand, text("HD", 2), 1);
  useSP(description);
  EXPECT_EQ(collect(),
            (std::vector<Properties>{
                node("1"),
                {"Header=HD", "Signature=", "Length=", "BuildNumber=", "SerialNumber=", "UniqueID=",
                 "MachineTypeModel=", "FileName=", "Version=", "SoftwareElementID=2",
                 "SoftwareElementState=3", "TargetOperatingSystem=66", "SourceNode=2",
                 "Name=Node 2 : Diagnostics"}}));
}

// What the SP driver gets to see.
class DiagnosticsDriverTest : public NodeDiagnosticsTest {
 protected:
  DiagnosticsDriverTest() {
    ON_CALL(library, isDotcommand).WillByDefault(testing::Return(true));
    ON_CALL(library, checkSPComm).WillByDefault(testing::Return(true));
    ON_CALL(library, discoverSPs).WillByDefault(testing::Return(2));
  }

  std::vector<Properties> collect() {
    EXPECT_EQ(plugin.getDiagsFirmware(ns, &library).status, 0);
    return published(plugin.diagnosticVpdInstances);
  }

  testing::NiceMock<MockSPLibrary> library;
};

TEST_F(DiagnosticsDriverTest, TamberSPOfAListedMachineTypeIsSentNothing) {
  ON_CALL(library, isDotcommand).WillByDefault(testing::Return(false));
  ON_CALL(library, isTamber).WillByDefault(testing::Return(true));
  EXPECT_CALL(library, discoverSPs).Times(0);
  EXPECT_CALL(library, sendDotCommand).Times(0);
  EXPECT_CALL(library, sendTamberCommand).Times(0);
  EXPECT_EQ(collect(), std::vector<Properties>{});
}

TEST_F(DiagnosticsDriverTest, EveryNodeGetsAClearedBufferOf2048Bytes) {
  EXPECT_CALL(library, sendDotCommand)
      .Times(2)
      .WillRepeatedly([](dotCmd* command, unsigned char* bytes, int*, int, int bufferSize) {
        EXPECT_EQ(command->type, 2);
        EXPECT_EQ(command->command, kCommand);
        EXPECT_EQ(command->data, Bytes{});
        EXPECT_EQ(bufferSize, kBufferSize);
        EXPECT_EQ(Bytes(bytes, bytes + kBufferSize), zeros(kBufferSize));
        std::fill_n(bytes, kBufferSize, static_cast<unsigned char>(0xFF));
        return true;
      });
  EXPECT_EQ(collect().size(), 2U);
}

TEST_F(DiagnosticsDriverTest, ReplyCountsWhateverItsLength) {
  const Bytes record = reply();
  for (const int length : {0, -1, 1, 68, 4096}) {
    EXPECT_CALL(library, sendDotCommand)
        .Times(2)
        .WillRepeatedly([&](dotCmd*, unsigned char* bytes, int* replyLength, int, int) {
          std::ranges::copy(record, bytes);
          *replyLength = length;
          return true;
        });
    plugin.diagnosticVpdInstances.clear();
    EXPECT_EQ(collect(), (std::vector<Properties>{node("1"), node("2")})) << length;
  }
}

TEST_F(DiagnosticsDriverTest, NodeCounterIsOfEightBits) {
  // Behind SP 255 comes SP 0 again, so more SPs than that never end; the driver ends them.
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(257));
  std::vector<int> spIndexes;
  ON_CALL(library, sendDotCommand)
      .WillByDefault([&](dotCmd*, unsigned char*, int*, int spIndex, int) {
        spIndexes.push_back(spIndex);
        if (spIndexes.size() == 520) throw std::runtime_error("enough");
        return false;
      });
  EXPECT_THROW(plugin.getDiagsFirmware(ns, &library), std::runtime_error);
  ASSERT_EQ(spIndexes.size(), 520U);
  for (std::size_t i = 0; i < spIndexes.size(); ++i) {
    EXPECT_EQ(spIndexes[i], static_cast<int>(i % 256)) << i;
  }
}

TEST_F(NodeDiagnosticsTest, NullHandlesAreRefusedWhereTheyAreUsedFirst) {
  constexpr char kBuildNumber[] = "KRXSG_DiagnosticVPD: Error adding Build Number";
  useNodes(2);
  const auto nullClass = boost::make_shared<NullClassNamespace>();
  EXPECT_EQ(plugin.createDiagInstance(nullClass, "A1").status, 3);
  EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(nullClass, sp()).status, 3);
  EXPECT_EQ(takeLog(), (Log{{3, kEntering},
                            {0, "Error allocating instance KRXSG_DiagnosticVPD"},
                            {0, "Error adding KRXSG_SystemBIOSElement class"}}));
  const auto nullInstance = boost::make_shared<NullInstanceNamespace>();
  EXPECT_EQ(plugin.createDiagInstance(nullInstance, "A1").status, 3);
  EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(nullInstance, sp()).status, 3);
  EXPECT_EQ(takeLog(), (Log{{3, kEntering}, {0, kBuildNumber}, {0, kBuildNumber}}));
  EXPECT_TRUE(plugin.diagnosticVpdInstances.empty());
}

TEST_F(NodeDiagnosticsTest, MissingClassIsLoggedUnderAnotherName) {
  useNodes(2);
  useFaults({}, {"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(plugin.createDiagInstanceBasedOnDotCommand(ns, sp()).status, 3);
  EXPECT_EQ(log, (Log{{0, "Error adding KRXSG_SystemBIOSElement class"}}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
