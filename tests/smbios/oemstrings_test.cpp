// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using Entries = std::map<std::string, std::string>;

constexpr char kFirst[] = "SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure";
constexpr char kNext[] = "SMBIOSInfo::getSMBIOSInfo - Retrieving the next SMBIOS structure.";
constexpr char kAllRead[] =
    "SMBIOSInfo::getSMBIOSInfo - read all smbios structures available for type 0";
constexpr char kReadFailed[] = "SMBIOSInfo::getSMBIOSInfo - smbios read operation failed! ";
constexpr char kEntering[] = "Entering SPFirmwareVpd::getType11()";
constexpr char kExiting[] = "Exiting SPFirmwareVpd::getType11()";

class OemStringsTest : public PluginTest {
 protected:
  Entries read(std::vector<SmbiosStructure> structures) {
    useSmbios(std::move(structures));
    plugin.smbiosOemEntries.clear();
    EXPECT_EQ(plugin.getType11().status, 0);
    return plugin.smbiosOemEntries;
  }
};

TEST_F(OemStringsTest, NamesAreNormalisedByTheFirstRuleThatMatches) {
  const struct {
    const char* oemString;
    const char* key;
    const char* value;
  } cases[] = {
      {"My KRX Diagnostics, level 1.02", "KRX Diagnostics", "MyKRXDiagnosticslevel102"},
      {"KRX Ambrel Management Processor 7", "KRX Ambrel Management Processor",
       "KRXAmbrelManagementProcessor7"},
      {"KRX Ambrels Management Processor", "KRX Ambrel Management Processor",
       "KRXAmbrelsManagementProcessor"},
      {"KRX Torvik Management Processor", "KRX Torvik Management Processor",
       "KRXTorvikManagementProcessor"},
      {"KRX Torviks Management Processor", "KRX Torvik Management Processor",
       "KRXTorviksManagementProcessor"},
      {"KRX Quellon Link Adapter-II", "KRX Quellon Link Adapter", "KRXQuellonLinkAdapterII"},
      {"KRX Quellon Link Adapter II", "KRX Quellon Link Adapter", "KRXQuellonLinkAdapterII"},
      {"XX KRX Quellon Link Adapter R2 - B", "XX KRX Quellon Link Adapter R2 ",
       "XXKRXQuellonLinkAdapterR2B"},
      {"A-KRX Quellon Link Adapter", "A", "AKRXQuellonLinkAdapter"},
      {"KRX Torvik Management Processor - KRX Diagnostics", "KRX Diagnostics",
       "KRXTorvikManagementProcessorKRXDiagnostics"},
      {"Other - text", "Other - text", "Othertext"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(read({oemStrings({c.oemString})}), (Entries{{c.key, c.value}})) << c.oemString;
  }
}

TEST_F(OemStringsTest, FirstOfTwoDiagnosticsStringsStays) {
  EXPECT_EQ(read({oemStrings({"KRX Diagnostics A"}), oemStrings({"KRX Diagnostics B"})}),
            (Entries{{"KRX Diagnostics", "KRXDiagnosticsA"}}));
}

TEST_F(OemStringsTest, SecondCallAddsToWhatIsThere) {
  read({oemStrings({"one"})});
  useSmbios({oemStrings({"two"})});
  plugin.getType11();
  EXPECT_EQ(plugin.smbiosOemEntries, (Entries{{"one", "one"}, {"two", "two"}}));
}

TEST_F(OemStringsTest, CountOfZeroAddsNothing) {
  EXPECT_EQ(read({structure(11, {0}, {"unseen"})}), Entries{});
}

TEST_F(OemStringsTest, BlankStringIsSkippedAndLaterNumbersAreRead) {
  EXPECT_EQ(read({oemStrings({" \t\n\v\f\r", "seen"})}), (Entries{{"seen", "seen"}}));
}

TEST_F(OemStringsTest, CountPastTheStringSetFindsNoMore) {
  EXPECT_EQ(read({structure(11, {255}, {"one", "two"})}),
            (Entries{{"one", "one"}, {"two", "two"}}));
}

TEST_F(OemStringsTest, StringsPastTheFirst1024BytesAreNotReached) {
  const std::vector<std::string> strings = {std::string(600, 'a'), std::string(600, 'b'), "c"};
  // A string is cut to 99 characters; the second begins inside the window, the third behind it.
  EXPECT_EQ(read({oemStrings(strings)}), (Entries{{std::string(99, 'a'), std::string(99, 'a')},
                                                  {std::string(99, 'b'), std::string(99, 'b')}}));
}

TEST_F(OemStringsTest, StringIsCutBehindByte1024OfItsSet) {
  // 1,020 bytes and a zero, then the last three bytes of the window and one behind it.
  EXPECT_EQ(read({oemStrings({std::string(1020, ' '), "XYZW"})}), (Entries{{"XYZ", "XYZ"}}));
}

TEST_F(OemStringsTest, WithoutAType11StructureTheTableStaysEmpty) {
  EXPECT_EQ(read({}), Entries{});
  EXPECT_EQ(log, (Log{{3, kEntering}, {3, kFirst}, {3, kAllRead}, {3, kExiting}}));
  EXPECT_EQ(plugin.getSpNameFromSmBios(), "KRX Quellon Link Adapter");
}

TEST_F(OemStringsTest, WalkTracesEachRead) {
  read({oemStrings({"one"}), oemStrings({"two"})});
  EXPECT_EQ(
      log,
      (Log{{3, kEntering}, {3, kFirst}, {3, kNext}, {3, kNext}, {3, kAllRead}, {3, kExiting}}));
}

TEST_F(OemStringsTest, FailedReadEndsTheWalkBehindItsStructure) {
  read({structure(11, {1}, {"delivered"}, 3), oemStrings({"never asked for"})});
  EXPECT_EQ(plugin.smbiosOemEntries, (Entries{{"delivered", "delivered"}}));
  EXPECT_EQ(log, (Log{{3, kEntering}, {3, kFirst}, {3, kReadFailed}, {3, kExiting}}));
}

TEST_F(OemStringsTest, UnknownStatusEndsTheWalkBehindItsStructure) {
  read({structure(11, {1}, {"delivered"}, 9), oemStrings({"never asked for"})});
  EXPECT_EQ(plugin.smbiosOemEntries, (Entries{{"delivered", "delivered"}}));
  EXPECT_EQ(log, (Log{{3, kEntering}, {3, kFirst}, {3, kExiting}}));
}

TEST_F(OemStringsTest, EndStatusOfAFailedReadProcessesTheZeroedBufferAndAddsNothing) {
  useSmbios({oemStrings({"one"})}, 3);
  EXPECT_EQ(plugin.getType11().status, 0);
  EXPECT_EQ(plugin.smbiosOemEntries, (Entries{{"one", "one"}}));
  EXPECT_EQ(log, (Log{{3, kEntering}, {3, kFirst}, {3, kNext}, {3, kReadFailed}, {3, kExiting}}));
}

TEST_F(OemStringsTest, UnopenedLibraryIsLoggedUnderAnotherOperationsName) {
  useSmbios({}, 5, 12);
  plugin.smbiosOemEntries = {{"kept", "kept"}};
  EXPECT_EQ(plugin.getType11().status, 3);
  EXPECT_EQ(log,
            (Log{{3, kEntering}, {0, "getDiagsFirmware: Unable to open SMBIOS lib error = 12"}}));
  EXPECT_EQ(plugin.smbiosOemEntries, (Entries{{"kept", "kept"}}));
}

TEST_F(OemStringsTest, SPNamePrefersTorvikThenTheFirstQuellonKey) {
  const struct {
    const char* what;
    Entries entries;
    const char* name;
  } cases[] = {
      {"empty table", {}, "KRX Quellon Link Adapter"},
      {"Torvik by exact key",
       {{"KRX Torvik Management Processor", ""}, {"KRX Quellon Link Adapter", ""}},
       "KRX Torvik Management Processor"},
      {"Torvik inside a longer key",
       {{"A KRX Torvik Management Processor", ""}},
       "KRX Quellon Link Adapter"},
      {"Quellon key as it was stored",
       {{"XX KRX Quellon Link Adapter R2 ", ""}},
       "XX KRX Quellon Link Adapter R2 "},
      {"first Quellon key",
       {{"B KRX Quellon Link Adapter", ""}, {"A KRX Quellon Link Adapter", ""}},
       "A KRX Quellon Link Adapter"},
      {"Ambrel is never returned",
       {{"KRX Ambrel Management Processor", ""}},
       "KRX Quellon Link Adapter"},
  };
  for (const auto& c : cases) {
    plugin.smbiosOemEntries = c.entries;
    EXPECT_EQ(plugin.getSpNameFromSmBios(), c.name) << c.what;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
