// SPDX-License-Identifier: Apache-2.0
//
// Firmware dates and the system BIOS element, where the calls tell more than the instance.
#include <algorithm>

#include "tests/spyplatform/expectedcalls.h"
#include "tests/spyplatform/spyfixture.h"

namespace spyplatform {
namespace {

using NKRXVEL20::TCIMDateTime;

using SystemBiosCallsTest = SpyTest;

TEST_F(SystemBiosCallsTest, DoTimeReturnsWhatTheFrameworkSaysOfTheDate) {
  const std::string kSetDate =
      "fdrSetDateTime(00000000000000.000000+000, 2007, 3, 15, 0, 0, 0, 0, 0) -> ";
  const std::string kSet =
      "instance#1.SetProperty(\"ReleaseDate\", date 20070315000000.000000+000, {})";
  const struct {
    const char* what;
    int status;  // the framework's
    bool noSet;
    int expected;
    Trace calls;
  } cases[] = {
      {"success", 0, false, 0, {kSetDate + "0", kSet}},
      {"success, not set", 0, true, 0, {kSetDate + "0"}},
      {"status 7", 7, false, 7, {kSetDate + "7", kSet}},
      {"status 7, not set", 7, true, 7, {kSetDate + "7"}},
      {"status -1", -1, false, -1, {kSetDate + "-1", kSet}},
      {"status -1, not set", -1, true, -1, {kSetDate + "-1"}},
      {"failure", 3, false, 3, {kSetDate + "3", "Log(0, \"Error Setting DateTime..\")"}},
      {"failure, not set", 3, true, 3, {kSetDate + "3", "Log(0, \"Error Setting DateTime..\")"}},
  };
  for (const auto& c : cases) {
    reset();
    load();
    const auto instance = makeClass("KRXSG_SystemBIOSElement")->CreateInstance();
    TCIMDateTime value;
    when("fdrSetDateTime", returns(c.status));
    takeTrace();
    EXPECT_EQ(plugin->doTime(instance, "ReleaseDate", "03/15/07", value, c.noSet).status,
              c.expected)
        << c.what;
    EXPECT_EQ(takeTrace(), c.calls) << c.what;
  }
}

TEST_F(SystemBiosCallsTest, RefusedDateFailsWhateverTheFrameworkSaidOfIt) {
  for (const int status : {0, 7}) {
    reset();
    load();
    const auto instance = makeClass("KRXSG_SystemBIOSElement")->CreateInstance();
    TCIMDateTime value;
    when("fdrSetDateTime", returns(status));
    when("SetProperty", refuses(13));
    EXPECT_EQ(plugin->doTime(instance, "ReleaseDate", "03/15/07", value, false).status, 3);
    EXPECT_EQ(takeTrace().back(), "Log(0, \"Error adding BuildDate property\")");
  }
}

TEST_F(SystemBiosCallsTest, TenCharactersWithoutAKnownFormAreSetAsTheValueStands) {
  load();
  const auto instance = makeClass("KRXSG_SystemBIOSElement")->CreateInstance();
  TCIMDateTime value;
  when("fdrSetDateTime", returns(7));
  takeTrace();
  EXPECT_EQ(plugin->doTime(instance, "ReleaseDate", "2009.07-14", value, false).status, 0);
  EXPECT_EQ(takeTrace(), (Trace{"instance#1.SetProperty(\"ReleaseDate\", date "
                                "00000000000000.000000+000, {})"}));
  EXPECT_EQ(plugin->doTime(instance, "ReleaseDate", "2009.07-14", value, true).status, 0);
  EXPECT_EQ(takeTrace(), Trace{});
}

TEST_F(SystemBiosCallsTest, OnlyAFailedDateIsReported) {
  const struct {
    const char* what;
    int status;
    Trace failures;
  } cases[] = {
      {"status 7", 7, {}},
      {"failure",
       3,
       {"Log(0, \"Error Setting DateTime..\")", "Log(0, \"failed to create CIMDateTime\")"}},
  };
  for (const auto& c : cases) {
    reset();
    state().structures = {biosInformation()};
    load();
    when("fdrSetDateTime", returns(c.status));
    EXPECT_EQ(plugin->getBIOSstructure(sp(), ns).status, 0) << c.what;
    EXPECT_EQ(linesWith(takeTrace(), "Log(0"), c.failures) << c.what;
    EXPECT_EQ(plugin->systemBiosElementInstances.size(), 1U) << c.what;
  }
}

// What a refusal of each property leaves to be seen of the texts and of the SP: the first ones
// fetch nothing yet, and nothing is fetched behind any.
TEST_F(SystemBiosCallsTest, NothingIsFetchedBehindARefusal) {
  const std::string kBefore = "getBIDString(100 bytes \"Maker|1.08 [ABC123]|03/15/07\", ";
  const std::string kStrings = kBefore + "100 zero bytes, 100, ";
  const std::string kDate = kStrings + "3) -> \"03/15/07\"";
  const std::string kVendor = kStrings + "1) -> \"Maker\"";
  const std::string kVersion = kStrings + "2) -> \"1.08 [ABC123]\"";
  const std::string kCleaned = "removeNonAlpaNumeric(\"1.08 [ABC123]\") -> \"108ABC123\"";
  const std::string kSplit =
      "breakApartVersion(\"108ABC123\", \"108ABC123\") -> \"108\", \"ABC123\"";
  const Trace kTexts = {kDate, kVendor, kVersion, kCleaned, kSplit};
  Trace withPost = kTexts;
  withPost.emplace_back(
      "sendDotCommand(dotCmd#1 04 03 05 01, 2048 zero bytes, length 0, SP 0, 2048) -> true, "
      "length 69");
  const struct {
    const char* property;
    const char* failure;
    Trace fetched;
  } cases[] = {
      {"SourceNode", "Error adding Name", {}},
      {"Name", "Error adding Name", {}},
      {"SoftwareElementState", "Error adding SoftwareElementState", {}},
      {"SoftwareElementID", "Error adding SoftwareElementID", {}},
      {"TargetOperatingSystem", "Error adding TargetOperatingSystem", {}},
      {"PrimaryBIOS", "Error adding PrimaryBIOS", {}},
      {"LoadedStartingAddress", "Error adding LoadedStartingAddress", {}},
      {"LoadedEndingAddress", "Error adding LoadedEndingAddress", {}},
      {"Manufacturer", "Error adding Manufacturer", {kDate, kVendor}},
      {"Version", "Error adding Version", kTexts},
      {"BuildNumber", "Error adding Build Number", kTexts},
      {"FileName", "Error adding FileName", withPost},
      {"UniqueID", "Error adding UniqueID", withPost},
      {"MachineTypeModel", "Error adding MachineTypeModel", withPost},
      {"SerialNumber", "Error adding SerialNumber", withPost},
  };
  for (const auto& c : cases) {
    reset();
    state().structures = {biosInformation(), biosInformation()};
    load();
    when("GetNumberBMCNode", returns(2));
    when("isDotcommand", returns(1));
    when("checkSPComm", returns(1));
    whenSent("04 03 05 01", 0, replies(nodeRecord()));
    when("SetProperty", {quoted(c.property)}, refuses(12));
    EXPECT_EQ(plugin->getBIOSstructure(sp(), ns).status, 3) << c.property;
    const Trace calls = takeTrace();
    Trace fetched;
    std::ranges::copy_if(calls, std::back_inserter(fetched), [](const std::string& line) {
      return line.starts_with("getBID") || line.starts_with("remove") ||
             line.starts_with("breakApart") || line.starts_with("send");
    });
    EXPECT_EQ(fetched, c.fetched) << c.property;
    // The library is not closed, and the walk does not say that it is left.
    const auto refusal = std::ranges::find_if(
        calls, [](const std::string& line) { return line.ends_with("throws TVELException(12)"); });
    EXPECT_EQ(Trace(refusal + 1, calls.end()),
              (Trace{"Log(0, " + quoted(c.failure) + ")", "~instance#1"}))
        << c.property;
    EXPECT_TRUE(plugin->systemBiosElementInstances.empty()) << c.property;
  }
}

TEST_F(SystemBiosCallsTest, RefusedReleaseDateIsReportedAndTheElementCompleted) {
  state().structures = {biosInformation()};
  load();
  when("SetProperty", {"\"ReleaseDate\""}, refuses(13));
  EXPECT_EQ(plugin->getBIOSstructure(sp(), ns).status, 0);
  EXPECT_EQ(linesWith(takeTrace(), "Log(0"), (Trace{"Log(0, \"Error adding BuildDate property\")",
                                                    "Log(0, \"failed to create CIMDateTime\")"}));
  EXPECT_EQ(plugin->systemBiosElementInstances.size(), 1U);
}

}  // namespace
}  // namespace spyplatform
