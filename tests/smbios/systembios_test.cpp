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

constexpr char kAllRead[] =
    "SMBIOSInfo::getSMBIOSInfo - read all smbios structures available for type 0";
constexpr int kBufferSize = 2048;

constexpr char kReadFailed[] = "SMBIOSInfo::getSMBIOSInfo - smbios read operation failed! ";

// BIOS Information: vendor 1, version 2, segment 0xE000, date 3, ROM size 0x3F.
SmbiosStructure bios(const std::vector<std::string>& strings = {"KRX", "1.08 [ABC123]", "03/15/07"},
                     int status = 0) {
  return structure(0, {1, 2, 0x00, 0xE0, 3, 0x3F}, strings, status);
}

Properties element(const std::string& node, const std::string& name) {
  return {"SourceNode=" + node,
          "Name=" + name,
          "SoftwareElementState=3",
          "SoftwareElementID=SP Firmware VPD Collector",
          "TargetOperatingSystem=66",
          "PrimaryBIOS=true",
          "LoadedStartingAddress=3758096384",  // 0xE0000000
          "LoadedEndingAddress=4128768",       // 0x3F0000
          "ReleaseDate=20070315000000.000000+000",
          "Manufacturer=KRX",
          "Version=108",
          "BuildNumber=ABC123"};
}

// What a zeroed structure gives: string number 0 names no text.
Properties emptyElement() {
  return {"SourceNode=1",
          "Name=System BIOS",
          "SoftwareElementState=3",
          "SoftwareElementID=SP Firmware VPD Collector",
          "TargetOperatingSystem=66",
          "PrimaryBIOS=true",
          "LoadedStartingAddress=0",
          "LoadedEndingAddress=0",
          "Manufacturer=",
          "Version=",
          "BuildNumber="};
}

class SystemBiosTest : public PluginTest {
 protected:
  int collect() { return plugin.getBIOSstructure(sp(), ns).status; }

  std::vector<Properties> elements() { return published(plugin.systemBiosElementInstances); }
};

TEST_F(SystemBiosTest, SingleNodeUefiMachineHasOneElement) {
  useSmbios({bios()});
  SimulatedSP description;
  description.integratedBmc = true;
  useSP(description);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(elements(), (std::vector<Properties>{element("1", "UEFI")}));
  EXPECT_EQ(log, (Log{{3, "Entering SPFirmwareVpd::getBIOSstructure()"},
                      {3, "getMachineType() entered."},
                      {3, "getMachineType() completed."},
                      {3, "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure"},
                      {3, "SMBIOSInfo::getSMBIOSInfo - Retrieving the next SMBIOS structure."},
                      {3, kAllRead},
                      {3, "Exiting SPFirmwareVpd::getBIOSstructure()"}}));
}

TEST_F(SystemBiosTest, ElementsAreNamedByNodeAndFirmware) {
  const struct {
    int nodes;
    bool isUefi;
    std::vector<std::string> names;
  } cases[] = {
      {0, false, {"System BIOS"}},
      {1, false, {"System BIOS"}},
      {1, true, {"UEFI"}},
      {2, false, {"Node 1 : System BIOS", "Node 2 : System BIOS"}},
      {2, true, {"Node 1 : UEFI", "Node 2 : UEFI"}},
  };
  for (const auto& c : cases) {
    useSmbios({bios()});
    SimulatedSP description;
    description.bmcNodes = c.nodes;
    description.integratedBmc = c.isUefi;
    useSP(description);
    plugin.systemBiosElementInstances.clear();
    EXPECT_EQ(collect(), 0);
    std::vector<Properties> expected;
    for (std::size_t i = 0; i < c.names.size(); ++i) {
      expected.push_back(element(std::to_string(i + 1), c.names[i]));
    }
    EXPECT_EQ(elements(), expected) << c.names.front();
  }
}

TEST_F(SystemBiosTest, NegativeNodeCountGivesNoElement) {
  useSmbios({bios(), bios()});
  SimulatedSP description;
  description.bmcNodes = -1;
  useSP(description);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(elements(), std::vector<Properties>{});
}

TEST_F(SystemBiosTest, NoStructureIsANormalEnd) {
  useSmbios({});
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(elements(), std::vector<Properties>{});
}

TEST_F(SystemBiosTest, UnopenedLibraryIsAFailure) {
  useSmbios({}, 5, 12);
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(log.back(),
            (Log::value_type{0, "getBIOSstructure: Unable to open SMBIOS lib error = 12"}));
}

TEST_F(SystemBiosTest, AddressesAreTheFieldsShiftedBySixteen) {
  const struct {
    Bytes data;
    const char* start;
    const char* end;
  } cases[] = {
      {{0, 0, 0xFF, 0xFF, 0, 0xFF}, "4294901760", "16711680"},  // 0xFFFF0000, 0xFF0000
      {{0, 0, 0x01, 0x00, 0, 0x01}, "65536", "65536"},
      {{0, 0, 0, 0, 0, 0}, "0", "0"},
  };
  for (const auto& c : cases) {
    useSmbios({structure(0, c.data, {})});
    plugin.systemBiosElementInstances.clear();
    collect();
    const auto rows = elements();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0][6], std::string("LoadedStartingAddress=") + c.start);
    EXPECT_EQ(rows[0][7], std::string("LoadedEndingAddress=") + c.end);
  }
}

TEST_F(SystemBiosTest, VersionLosesAllButLettersAndDigitsBeforeItIsSplit) {
  useSmbios({bios({"KRX", "ABC-123 (A1.20)", "03/15/07"})});
  collect();
  const auto rows = elements();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0][10], "Version=120");
  EXPECT_EQ(rows[0][11], "BuildNumber=ABC123A");
}

TEST_F(SystemBiosTest, DateThatDoesNotExistIsLoggedAndTheElementCompleted) {
  useSmbios({bios({"KRX", "1.08 [ABC123]", "02/30/07"})});
  EXPECT_EQ(collect(), 0);
  Properties expected = element("1", "System BIOS");
  expected.erase(expected.begin() + 8);
  EXPECT_EQ(elements(), (std::vector<Properties>{expected}));
  Log failures = log;
  std::erase_if(failures, [](const auto& entry) { return entry.first != 0; });
  EXPECT_EQ(failures, (Log{{0, "Error Setting DateTime.."}, {0, "failed to create CIMDateTime"}}));
}

TEST_F(SystemBiosTest, StringsAreReachedWithinTheFirst100BytesOnly) {
  const std::string filler(97, 'x');  // bytes 0 to 96 and a zero
  useSmbios({bios({filler, "1.08", "03/15/07"})});
  collect();
  const auto rows = elements();
  ASSERT_EQ(rows.size(), 1U);
  // Two bytes of the version lie inside; nothing of the date.
  EXPECT_EQ(rows[0][8], "Manufacturer=" + filler);
  EXPECT_EQ(rows[0][9], "Version=1");
}

TEST_F(SystemBiosTest, EveryStructureIsPublishedOnMostMachines) {
  useSmbios({bios(), bios()});
  collect();
  EXPECT_EQ(plugin.systemBiosElementInstances.size(), 2U);
}

TEST_F(SystemBiosTest, MachineTypeThatOnlyHoldsAListedOnePublishesEveryStructure) {
  for (const char* machine : {"43201", "14320", "4325AC1", "44300", "14430", "432", ""}) {
    useSmbios({bios(), bios()});
    host::setMachineType(machine);
    plugin.systemBiosElementInstances.clear();
    EXPECT_EQ(collect(), 0) << machine;
    EXPECT_EQ(plugin.systemBiosElementInstances.size(), 2U) << machine;
  }
}

TEST_F(SystemBiosTest, MachineTypeIsAskedAnewAndNotKept) {
  useSmbios({bios(), bios()});
  host::setMachineType("4430");
  plugin.machineType = "4320";
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(plugin.machineType, "4320");
  EXPECT_EQ(log[4].second,
            "This machine is a Durnik. Finished collecting first SMBIOS record for 'System BIOS'.");
}

TEST_F(SystemBiosTest, CallowayAndDurnikPublishTheFirstStructureOnly) {
  const struct {
    const char* machine;
    const char* name;
  } cases[] = {{"4320", "Calloway"}, {"4325", "Calloway"}, {"4430", "Durnik"}};
  for (const auto& c : cases) {
    useSmbios({bios(), bios()});
    host::setMachineType(c.machine);
    plugin.systemBiosElementInstances.clear();
    log.clear();
    EXPECT_EQ(collect(), 0);
    EXPECT_EQ(plugin.systemBiosElementInstances.size(), 1U) << c.machine;
    EXPECT_EQ(log, (Log{{3, "Entering SPFirmwareVpd::getBIOSstructure()"},
                        {3, "getMachineType() entered."},
                        {3, "getMachineType() completed."},
                        {3, "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure"},
                        {3, std::string("This machine is a ") + c.name +
                                ". Finished collecting first SMBIOS record for 'System BIOS'."},
                        {3, "Exiting SPFirmwareVpd::getBIOSstructure()"}}));
  }
}

TEST_F(SystemBiosTest, CallowayAndDurnikHaveTheirLineWhateverTheStatusOfTheStructure) {
  const struct {
    const char* machine;
    const char* name;
    int status;
    Log failedRead;
  } cases[] = {
      {"4320", "Calloway", 3, {{3, kReadFailed}}},
      {"4430", "Durnik", 3, {{3, kReadFailed}}},
      {"4325", "Calloway", 9, {}},
  };
  for (const auto& c : cases) {
    useSmbios({bios({"KRX", "1.08 [ABC123]", "03/15/07"}, c.status), bios()});
    host::setMachineType(c.machine);
    plugin.systemBiosElementInstances.clear();
    log.clear();
    EXPECT_EQ(collect(), 0);
    EXPECT_EQ(elements(), (std::vector<Properties>{element("1", "System BIOS")})) << c.machine;
    Log expected = {{3, "Entering SPFirmwareVpd::getBIOSstructure()"},
                    {3, "getMachineType() entered."},
                    {3, "getMachineType() completed."},
                    {3, "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure"}};
    expected.insert(expected.end(), c.failedRead.begin(), c.failedRead.end());
    expected.emplace_back(3, std::string("This machine is a ") + c.name +
                                 ". Finished collecting first SMBIOS record for 'System BIOS'.");
    expected.emplace_back(3, "Exiting SPFirmwareVpd::getBIOSstructure()");
    EXPECT_EQ(log, expected) << c.machine << " of status " << c.status;
  }
}

TEST_F(SystemBiosTest, CallowayWithoutAStructureEndsWithoutItsLine) {
  useSmbios({});
  host::setMachineType("4320");
  collect();
  EXPECT_EQ(log[log.size() - 2], (Log::value_type{3, kAllRead}));
}

TEST_F(SystemBiosTest, FailedReadPublishesOneMoreElement) {
  useSmbios({bios()}, 3);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(elements(), (std::vector<Properties>{element("1", "System BIOS"), emptyElement()}));
}

using Texts = std::vector<std::string>;

constexpr char kPostBiosSent[] = "04030501 to SP 0";

Fault setFault(const std::string& property, std::optional<unsigned> nth, bool throwsRuntimeError) {
  return {.operation = host::CimOperation::kSetProperty,
          .className = {},
          .propertyName = property,
          .nth = nth,
          .throwsRuntimeError = throwsRuntimeError};
}

class PostBiosTest : public SystemBiosTest {
 protected:
  // File name, unique id, machine type-model and serial number where they belong.
  static Bytes reply() {
    return joined({zeros(22), text("KQ1234X", 7), text("0123456789A", 11), text("5010AC1", 7),
                   zeros(9), text("POSTBIOS.BIN", 12)});
  }
};

TEST_F(PostBiosTest, SPCompletesEachNodesElement) {
  useSmbios({bios()});
  SimulatedSP description = dotCommandSP();
  description.bmcNodes = 2;
  answer(description, {4, 3, 5, 1}, reply(), 0);
  answer(description, {4, 3, 5, 1}, Bytes(68, 0), 1);
  useSP(description);
  EXPECT_EQ(collect(), 0);
  Properties first = element("1", "Node 1 : System BIOS");
  first.insert(first.end(), {"FileName=POSTBIOS.BIN", "UniqueID=0123456789A",
                             "MachineTypeModel=5010AC1", "SerialNumber=KQ1234X"});
  Properties second = element("2", "Node 2 : System BIOS");
  second.insert(second.end(), {"FileName=", "UniqueID=", "MachineTypeModel=", "SerialNumber="});
  EXPECT_EQ(elements(), (std::vector<Properties>{first, second}));
}

TEST_F(PostBiosTest, SPThatDoesNotKnowDropsItsPropertiesOnly) {
  useSmbios({bios()});
  useSP(dotCommandSP());
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(elements(), (std::vector<Properties>{element("1", "System BIOS")}));
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"04030501 to SP 0 failed"}));
}

TEST_F(PostBiosTest, CommandIsSentOnceANodeThoughNoSPWasFound) {
  useSmbios({bios()});
  SimulatedSP description = dotCommandSP(0);
  description.bmcNodes = 2;
  useSP(description);
  collect();
  EXPECT_EQ(takeTraffic(),
            (std::vector<std::string>{"04030501 to SP 0 failed", "04030501 to SP 1 failed"}));
}

TEST_F(PostBiosTest, SilentSPIsNotAsked) {
  useSmbios({bios()});
  SimulatedSP description = dotCommandSP();
  description.answers = false;
  useSP(description);
  collect();
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(PostBiosTest, EachRefusalIsLoggedAndEndsTheCollectionAtOnce) {
  const struct {
    unsigned place;  // of the property in the order of setting; 9 is the release date
    const char* property;
    const char* failure;
    Texts traffic = {};
  } cases[] = {
      {1, "SourceNode", "Error adding Name"},
      {2, "Name", "Error adding Name"},
      {3, "SoftwareElementState", "Error adding SoftwareElementState"},
      {4, "SoftwareElementID", "Error adding SoftwareElementID"},
      {5, "TargetOperatingSystem", "Error adding TargetOperatingSystem"},
      {6, "PrimaryBIOS", "Error adding PrimaryBIOS"},
      {7, "LoadedStartingAddress", "Error adding LoadedStartingAddress"},
      {8, "LoadedEndingAddress", "Error adding LoadedEndingAddress"},
      {10, "Manufacturer", "Error adding Manufacturer"},
      {11, "Version", "Error adding Version"},
      {12, "BuildNumber", "Error adding Build Number"},
      {13, "FileName", "Error adding FileName", {kPostBiosSent}},
      {14, "UniqueID", "Error adding UniqueID", {kPostBiosSent}},
      {15, "MachineTypeModel", "Error adding MachineTypeModel", {kPostBiosSent}},
      {16, "SerialNumber", "Error adding SerialNumber", {kPostBiosSent}},
  };
  for (const auto& c : cases) {
    useSmbios({bios(), bios()});
    SimulatedSP description = dotCommandSP();
    description.bmcNodes = 2;
    answer(description, {4, 3, 5, 1}, reply());
    useSP(description);
    // Any setting behind the refused one would end in an exception that passes.
    useFaults({setFault(c.property, std::nullopt, false), setFault("", c.place + 1, true)});
    log.clear();
    EXPECT_EQ(collect(), 3) << c.property;
    EXPECT_TRUE(plugin.systemBiosElementInstances.empty()) << c.property;
    EXPECT_EQ(log.size(), 5U) << c.property;  // nothing is read or written behind the failure
    EXPECT_EQ(log.back(), (Log::value_type{0, c.failure})) << c.property;
    EXPECT_EQ(takeTraffic(), c.traffic) << c.property;
  }
}

TEST_F(SystemBiosTest, RefusedReleaseDateIsLoggedTwiceAndTheElementCompleted) {
  useSmbios({bios()});
  refuseProperty("ReleaseDate");
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(plugin.systemBiosElementInstances.size(), 1U);
  EXPECT_EQ(log[4], (Log::value_type{0, "Error adding BuildDate property"}));
  EXPECT_EQ(log[5], (Log::value_type{0, "failed to create CIMDateTime"}));
}

// What the SP driver gets to see.
class BiosDriverTest : public PostBiosTest {
 protected:
  BiosDriverTest() {
    ON_CALL(library, GetNumberBMCNode).WillByDefault(testing::Return(2));
    ON_CALL(library, isDotcommand).WillByDefault(testing::Return(true));
    ON_CALL(library, checkSPComm).WillByDefault(testing::Return(true));
  }

  int collect() { return plugin.getBIOSstructure(&library, ns).status; }

  testing::NiceMock<MockSPLibrary> library;
};

TEST_F(BiosDriverTest, NodesAreCountedForEachStructureAndTheSPIsAskedForEachNode) {
  useSmbios({bios(), bios()});
  Texts calls;
  const auto noted = [&](const char* call, auto result) {
    return [&calls, call, result] {
      calls.emplace_back(call);
      return result;
    };
  };
  ON_CALL(library, GetNumberBMCNode).WillByDefault(noted("nodes", 2));
  ON_CALL(library, IsIntegratedBMC).WillByDefault(noted("UEFI", true));
  ON_CALL(library, isDotcommand).WillByDefault(noted("dot commands", true));
  ON_CALL(library, checkSPComm).WillByDefault(noted("answers", true));
  ON_CALL(library, sendDotCommand)
      .WillByDefault([&](dotCmd*, unsigned char*, int*, int spIndex, int) {
        calls.push_back("send to SP " + std::to_string(spIndex));
        return true;
      });
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(calls, (Texts{"nodes",                                            //
                          "UEFI", "dot commands", "answers", "send to SP 0",  //
                          "UEFI", "dot commands", "answers", "send to SP 1",  //
                          "nodes",                                            //
                          "UEFI", "dot commands", "answers", "send to SP 0",  //
                          "UEFI", "dot commands", "answers", "send to SP 1"}));
}

TEST_F(BiosDriverTest, CommandGoesOutWithAClearedBufferOf2048Bytes) {
  useSmbios({bios()});
  EXPECT_CALL(library, sendDotCommand)
      .Times(2)
      .WillRepeatedly([](dotCmd* command, unsigned char* bytes, int*, int, int bufferSize) {
        EXPECT_EQ(command->type, 2);
        EXPECT_EQ(command->command, (Bytes{4, 3, 5, 1}));
        EXPECT_EQ(command->data, Bytes{});
        EXPECT_EQ(bufferSize, kBufferSize);
        EXPECT_EQ(Bytes(bytes, bytes + kBufferSize), zeros(kBufferSize));
        std::fill_n(bytes, kBufferSize, static_cast<unsigned char>(0xFF));
        return true;
      });
  EXPECT_EQ(collect(), 0);
}

TEST_F(BiosDriverTest, ReplyCountsWhateverItsLength) {
  useSmbios({bios()});
  const Bytes record = reply();
  Properties expected = element("1", "System BIOS");
  expected.insert(expected.end(), {"FileName=POSTBIOS.BIN", "UniqueID=0123456789A",
                                   "MachineTypeModel=5010AC1", "SerialNumber=KQ1234X"});
  ON_CALL(library, GetNumberBMCNode).WillByDefault(testing::Return(1));
  for (const int length : {0, -1, 1, 67, 4096}) {
    EXPECT_CALL(library, sendDotCommand)
        .WillOnce([&](dotCmd*, unsigned char* bytes, int* replyLength, int, int) {
          std::ranges::copy(record, bytes);
          *replyLength = length;
          return true;
        });
    plugin.systemBiosElementInstances.clear();
    EXPECT_EQ(collect(), 0) << length;
    EXPECT_EQ(elements(), (std::vector<Properties>{expected})) << length;
  }
}

TEST_F(BiosDriverTest, NodeCounterIsOfEightBits) {
  useSmbios({bios()});
  // Behind node 256 comes node 1 again, so more nodes than that never end; the driver ends them.
  ON_CALL(library, GetNumberBMCNode).WillByDefault(testing::Return(257));
  std::vector<int> spIndexes;
  ON_CALL(library, sendDotCommand)
      .WillByDefault([&](dotCmd*, unsigned char*, int*, int spIndex, int) {
        spIndexes.push_back(spIndex);
        if (spIndexes.size() == 520) throw std::runtime_error("enough");
        return false;
      });
  EXPECT_THROW(collect(), std::runtime_error);
  ASSERT_EQ(spIndexes.size(), 520U);
  for (std::size_t i = 0; i < spIndexes.size(); ++i) {
    EXPECT_EQ(spIndexes[i], static_cast<int>(i % 256)) << i;
  }
  const auto rows = elements();
  ASSERT_EQ(rows.size(), 519U);
  EXPECT_EQ(rows[254][1], "Name=Node 255 : System BIOS");
  EXPECT_EQ(rows[255][1], "Name=Node 256 : System BIOS");
  EXPECT_EQ(rows[256], element("1", "Node 1 : System BIOS"));
}

TEST_F(SystemBiosTest, NullHandlesAreRefusedWhereTheyAreUsedFirst) {
  useSmbios({bios(), bios()});
  EXPECT_EQ(plugin.getBIOSstructure(sp(), boost::make_shared<NullClassNamespace>()).status, 3);
  EXPECT_EQ(log.back(), (Log::value_type{0, "Error adding KRXSG_SystemBIOSElement class"}));
  EXPECT_EQ(plugin.getBIOSstructure(sp(), boost::make_shared<NullInstanceNamespace>()).status, 3);
  EXPECT_EQ(log.back(), (Log::value_type{0, "Error adding Name"}));
  EXPECT_TRUE(plugin.systemBiosElementInstances.empty());
}

TEST_F(SystemBiosTest, MissingClassEndsTheCollection) {
  useSmbios({bios(), bios()});
  useFaults({}, {"KRXSG_SystemBIOSElement"});
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(log.back(), (Log::value_type{0, "Error adding KRXSG_SystemBIOSElement class"}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
