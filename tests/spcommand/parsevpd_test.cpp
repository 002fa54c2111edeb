// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tests/support/mocksplibrary.h"
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using NKRXVEL20::dotCmd;
using ClassRecord = SPFirmwareVpd::ClassRecord;
using Records = std::vector<ClassRecord>;

const Bytes kMain = {4, 3, 5, 6, 1};
const Bytes kBootRom = {4, 3, 5, 6, 2};
const Bytes kHardware = {4, 3, 5, 7};
const Bytes kDiagnostics = {4, 3, 5, 1, 1};

constexpr char kParsing[] =
    "spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , description";
constexpr char kFailedTwice[] = " cmd failed..trying again.. ";

// A firmware record: build, reserved, file, checksum, date, version, part number.
Bytes firmwareReply(const std::string& build) {
  return joined({text(build, 7),
                 text("???", 3),
                 text("SPMAIN.PKT", 12),
                 {0xC8},
                 text("07/14/09", 8),
                 {12},
                 text("39Y12345", 8)});
}

// A diagnostics record of 69 bytes.
Bytes diagnosticsReply() {
  return joined({text("HD", 2),
                 text("SIG", 3),
                 {0x45},
                 text("xxxxxxx", 7),
                 text("DSYT42A", 9),
                 text("KQ1234X", 7),
                 text("0123456789A", 11),
                 text("5010AC1", 7),
                 {0x99},
                 text("03/15/07", 8),
                 text("DIAGS.IMG", 12),
                 {3}});
}

ClassRecord firmwareRecord(const std::string& className, const std::string& build,
                           const std::string& node) {
  return {{className,
           {{"BuildDate", "20090714000000.000000+000"},
            {"BuildNumber", build},
            {"Checksum", "200"},
            {"FileName", "SPMAIN.PKT"},
            {"PartNumber", "39Y12345"},
            {"SoftwareElementID", node},
            {"SoftwareElementState", ""},
            {"SourceNode", node},
            {"TargetOperatingSystem", ""},
            {"Version", "12"}}}};
}

ClassRecord hardwareRecord(const std::string& level, const std::string& node) {
  return {{"KRXSG_HardwareRevisionLevel",
           {{"Hardwarelevel", level},
            {"SoftwareElementID", node},
            {"SoftwareElementState", ""},
            {"SourceNode", node},
            {"TargetOperatingSystem", ""},
            {"Version", level}}}};
}

ClassRecord diagnosticsRecord(const std::string& node) {
  return {{"KRXSG_DiagnosticVPD",
           {{"", "SIG"},
            {"BuildDate", "20070315000000.000000+000"},
            {"BuildNumber", "DSYT42A"},
            {"Checksum", "153"},
            {"FileName", "DIAGS.IMG"},
            {"Header", "HD"},
            {"Length", "69"},
            {"MachineTypeModel", "5010AC1"},
            {"SerialNumber", "KQ1234X"},
            {"SoftwareElementID", node},
            {"SoftwareElementState", ""},
            {"SourceNode", node},
            {"TargetOperatingSystem", ""},
            {"UniqueID", "0123456789A"},
            {"Version", ""}}}};
}

void answerAll(SimulatedSP& sp, int spIndex, const std::string& build) {
  answer(sp, kMain, firmwareReply(build), spIndex);
  answer(sp, kBootRom, firmwareReply(build + "B"), spIndex);
  answer(sp, kHardware, {7}, spIndex);
  answer(sp, kDiagnostics, diagnosticsReply(), spIndex);
}

class ParseVpdTest : public PluginTest {
 protected:
  Records parse(const SimulatedSP& description) {
    useSP(description);
    return plugin.getParseVPD(sp(), ns);
  }

  std::ptrdiff_t count(const std::string& entry) const {
    return std::ranges::count(log, entry, &Log::value_type::second);
  }
};

TEST_F(ParseVpdTest, OneSPGivesFourRecordsInTableOrder) {
  plugin.loadSPCommands();
  SimulatedSP description = dotCommandSP();
  answerAll(description, 0, "BUILD1");
  const Records expected = {firmwareRecord("KRXSG_SPROMFirmwareVPDMain", "BUILD1", "1"),
                            firmwareRecord("KRXSG_SPROMFirmwareVPDBootROM", "BUILD1B", "1"),
                            hardwareRecord("7", "1"), diagnosticsRecord("1")};
  EXPECT_EQ(parse(description), expected);
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"0403050601 to SP 0", "0403050602 to SP 0",
                                                     "04030507 to SP 0", "0403050101 to SP 0"}));
}

TEST_F(ParseVpdTest, TwoSPsGiveEightRecordsTheFirstSPsBeforeTheSeconds) {
  plugin.loadSPCommands();
  SimulatedSP description = dotCommandSP(2);
  answerAll(description, 0, "FIRST");
  answerAll(description, 1, "SECOND");
  const Records expected = {firmwareRecord("KRXSG_SPROMFirmwareVPDMain", "FIRST", "1"),
                            firmwareRecord("KRXSG_SPROMFirmwareVPDBootROM", "FIRSTB", "1"),
                            hardwareRecord("7", "1"),
                            diagnosticsRecord("1"),
                            firmwareRecord("KRXSG_SPROMFirmwareVPDMain", "SECOND", "2"),
                            firmwareRecord("KRXSG_SPROMFirmwareVPDBootROM", "SECONDB", "2"),
                            hardwareRecord("7", "2"),
                            diagnosticsRecord("2")};
  EXPECT_EQ(parse(description), expected);
}

TEST_F(ParseVpdTest, ZeroReplyGivesZeroNumbersAndEmptyTextsWithoutADate) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "a|2|Text|", "a|8|BuildDate|", "b|1|Number|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, zeros(11));
  EXPECT_EQ(parse(description), (Records{{{"KRXSG_Test",
                                           {{"BuildDate", ""},
                                            {"Number", "0"},
                                            {"SoftwareElementID", "1"},
                                            {"SoftwareElementState", ""},
                                            {"SourceNode", "1"},
                                            {"TargetOperatingSystem", ""},
                                            {"Text", ""}}}}}));
}

TEST_F(ParseVpdTest, ShortReplyReadsAsZeroBehindItsEnd) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|1|First|", "b|1|Second|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {5});
  const Records records = parse(description);
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("First"), "5");
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Second"), "0");
}

TEST_F(ParseVpdTest, WideNumberYieldsItsFirstByteAndTakesItsWholeWidth) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|3|Wide|", "b|1|Next|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {0xFF, 1, 2, 3});
  const Records records = parse(description);
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Wide"), "255");
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Next"), "3");
}

// Only the level itself is the Version as well, and only of the class that has levels.
TEST_F(ParseVpdTest, HardwareLevelIsTheVersionOfItsClass) {
  const struct {
    const char* what;
    const char* className;
    const char* field;
    bool hasVersion;
  } cases[] = {
      {"level", "KRXSG_HardwareRevisionLevel", "Hardwarelevel", true},
      {"both within longer names", "XKRXSG_HardwareRevisionLevelX", "XHardwarelevelX", true},
      {"another number of the class", "KRXSG_HardwareRevisionLevel", "Checksum", false},
      {"level of another class", "KRXSG_Test", "Hardwarelevel", false},
  };
  for (const auto& c : cases) {
    plugin.spCommandTable = {std::string("d|1|9|") + c.className + "|",
                             std::string("b|1|") + c.field + "|"};
    SimulatedSP description = dotCommandSP();
    answer(description, {9}, {7});
    SPFirmwareVpd::PropertyMap expected = {{"SoftwareElementID", "1"},
                                           {"SoftwareElementState", ""},
                                           {"SourceNode", "1"},
                                           {"TargetOperatingSystem", ""},
                                           {c.field, "7"}};
    if (c.hasVersion) expected["Version"] = "7";
    EXPECT_EQ(parse(description), (Records{{{c.className, expected}}})) << c.what;
  }
}

// The offsets are sums: bytes 0 to 3 are read, then 0 to 2 once more and so on.
TEST_F(ParseVpdTest, NegativeLengthMovesTheOffsetBack) {
  const struct {
    const char* what;
    std::vector<std::string> fields;
    std::string b;
    std::string c;
  } cases[] = {
      {"back within the reply", {"b|4|A|", "r|-3|R|", "b|1|B|", "a|2|C|"}, "50", "34"},
      {"back to before the reply", {"r|-1|R|", "b|1|B|", "a|2|C|"}, "0", "12"},
      {"a text before the reply is empty", {"r|-2|R|", "a|4|C|", "r|-2|R|", "b|1|B|"}, "49", ""},
      {"a number of no bytes is the first", {"b|0|B|", "a|1|C|"}, "49", "1"},
      {"a number of a negative length too", {"r|2|R|", "b|-2|B|", "a|1|C|"}, "51", "1"},
      {"a text of a negative length is empty", {"r|2|R|", "a|-1|C|", "b|1|B|"}, "50", ""},
      {"without a length before, none is kept", {"r|", "b|1|B|", "a|1|C|"}, "49", "2"},
      {"far beyond every buffer",
       {"r|2147483647|R|", "r|2147483647|R|", "b|-2147483648|B|", "r|-2147483646|R|", "a|1|C|"},
       "0",
       "1"},
  };
  for (const auto& c : cases) {
    plugin.spCommandTable = {"d|1|9|KRXSG_Test|"};
    plugin.spCommandTable.insert(plugin.spCommandTable.end(), c.fields.begin(), c.fields.end());
    SimulatedSP description = dotCommandSP();
    answer(description, {9}, text("12345", 5));
    const auto properties = parse(description).at(0).at("KRXSG_Test");
    EXPECT_EQ(properties.at("B"), c.b) << c.what;
    EXPECT_EQ(properties.at("C"), c.c) << c.what;
  }
}

TEST_F(ParseVpdTest, NegativeByteCountCountsAsNone) {
  plugin.spCommandTable = {"d|-2|KRXSG_Test|", "b|1|Number|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {}, {5});
  EXPECT_TRUE(parse(description).at(0).contains("KRXSG_Test"));
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{" to SP 0"}));
}

TEST_F(ParseVpdTest, VersionPlaceholderIsEmptyAndSkipsItsBytes) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "v|2|Anything|", "b|1|Next|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {1, 2, 3});
  const Records records = parse(description);
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Version"), "");
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Next"), "3");
  EXPECT_FALSE(records.at(0).at("KRXSG_Test").contains("Anything"));
}

TEST_F(ParseVpdTest, FieldsPastTheReplyBufferReadAsNothing) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "r|2047|Reserved|", "a|8|Last|", "b|1|Number|",
                           "a|8|Text|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, Bytes(2048, 'x'));
  const Records records = parse(description);
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Last"), "x");
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Number"), "0");
  EXPECT_EQ(records.at(0).at("KRXSG_Test").at("Text"), "");
}

TEST_F(ParseVpdTest, DatesThatCannotBeConvertedKeepTheDefaultTimestamp) {
  const struct {
    const char* date;
    const char* timestamp;
    Log log;
  } cases[] = {
      {"02/30/09",
       "00000000000000.000000+000",
       {{0, "Error Setting DateTime.."}, {0, "failed to create CIMDateTime"}}},
      {"nodate", "00000000000000.000000+000", {}},
  };
  for (const auto& c : cases) {
    plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "a|8|BuildDate|"};
    SimulatedSP description = dotCommandSP();
    answer(description, {9}, text(c.date, 8));
    log.clear();
    EXPECT_EQ(parse(description).at(0).at("KRXSG_Test").at("BuildDate"), c.timestamp) << c.date;
    std::erase_if(log, [](const auto& entry) { return entry.first != 0; });
    EXPECT_EQ(log, c.log) << c.date;
  }
}

TEST_F(ParseVpdTest, EmptyTableIsReportedForEverySP) {
  EXPECT_EQ(parse(dotCommandSP(2)), Records{});
  EXPECT_EQ(log, (Log{{0, "Failed to get sp commands!"}, {0, "Failed to get sp commands!"}}));
}

TEST_F(ParseVpdTest, NoSPSendsNothing) {
  plugin.loadSPCommands();
  EXPECT_EQ(parse(dotCommandSP(0)), Records{});
  EXPECT_EQ(parse(dotCommandSP(-1)), Records{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(ParseVpdTest, TraceTellsEveryStepAndIsNeverCleared) {
  plugin.spCommandTable = {"d|2|4|3|KRXSG_Test|", "b|1|Number|", "d|1|12|KRXSG_Other|",
                           "b|1|Level|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {4, 3}, {1});
  answer(description, {12}, {2});
  parse(description);
  const Log expected = {
      {3, " starting to read data types of dotcommand "},
      {3, "d|2|4|3|KRXSG_Test|"},
      {3, " reading dotcommand "},
      {3, "4"},
      {3, " reading dotcommand "},
      {3, "3"},
      {3, "dotcommand "},
      {3, "43"},
      {3, " memset data "},
      {3, "sent dotcommand to sp driver"},
      {3, kParsing},  // the number
      {3, kParsing},  // the next command line
      {3, " reading dotcommand "},
      {3, "12"},
      {3, "dotcommand "},
      {3, "4312"},
      {3, " memset data "},
      {3, "sent dotcommand to sp driver"},
      {3, kParsing},
  };
  EXPECT_EQ(log, expected);
}

TEST_F(ParseVpdTest, SecondSendOfACommandMaySucceed) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|1|Number|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {5});
  description.dotCommands[0].replies.insert(description.dotCommands[0].replies.begin(),
                                            {.fails = true, .bytes = {}, .length = std::nullopt});
  EXPECT_EQ(parse(description).size(), 1U);
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"09 to SP 0 failed", "09 to SP 0"}));
  EXPECT_EQ(count(kFailedTwice), 0);
}

// What stands behind the class name is the next command: the line is used up from its front.
TEST_F(ParseVpdTest, DoubleFailureGoesOnWithTheRestOfItsLine) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|d|1|8|KRXSG_Rest|", "b|1|Number|", "b|1|Level|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {8}, {5, 6});
  EXPECT_EQ(parse(description), (Records{{{"KRXSG_Rest",
                                           {{"Level", "6"},
                                            {"Number", "5"},
                                            {"SoftwareElementID", "1"},
                                            {"SoftwareElementState", ""},
                                            {"SourceNode", "1"},
                                            {"TargetOperatingSystem", ""}}}}}));
  EXPECT_EQ(takeTraffic(),
            (std::vector<std::string>{"09 to SP 0 failed", "09 to SP 0 failed", "08 to SP 0"}));
}

TEST_F(ParseVpdTest, DoubleFailureSendsAnEmptyCommandForEachRemainingLine) {
  plugin.loadSPCommands();
  SimulatedSP description = dotCommandSP(2);
  answerAll(description, 1, "SECOND");
  EXPECT_EQ(parse(description).size(), 4U);  // the second SP starts anew
  std::vector<std::string> expected = {"0403050601 to SP 0 failed", "0403050601 to SP 0 failed"};
  expected.insert(expected.end(), 2U * 30, " to SP 0 failed");
  for (const char* sent :
       {"0403050601 to SP 1", "0403050602 to SP 1", "04030507 to SP 1", "0403050101 to SP 1"}) {
    expected.emplace_back(sent);
  }
  EXPECT_EQ(takeTraffic(), expected);
  EXPECT_EQ(count(kFailedTwice), 31);
}

TEST_F(ParseVpdTest, DoubleFailureWithADoubledTableSends61EmptyCommands) {
  plugin.loadSPCommands();
  plugin.loadSPCommands();
  parse(dotCommandSP());
  EXPECT_EQ(takeTraffic().size(), 2U + 2U * 61);
}

TEST_F(ParseVpdTest, DoubleFailureOfALaterCommandKeepsTheRecordsBefore) {
  plugin.loadSPCommands();
  SimulatedSP description = dotCommandSP();
  answer(description, kMain, firmwareReply("BUILD1"));
  answer(description, kHardware, {7});
  answer(description, kDiagnostics, diagnosticsReply());
  EXPECT_EQ(parse(description),
            (Records{firmwareRecord("KRXSG_SPROMFirmwareVPDMain", "BUILD1", "1")}));
  // The failed command stood on line 8, with the index on line 9 already: 10 to 30 are left.
  std::vector<std::string> expected = {"0403050601 to SP 0", "0403050602 to SP 0 failed",
                                       "0403050602 to SP 0 failed"};
  expected.insert(expected.end(), 2U * 21, " to SP 0 failed");
  EXPECT_EQ(takeTraffic(), expected);
}

TEST_F(ParseVpdTest, EmptyCommandThatIsAnsweredGivesARecordWithoutAClass) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|1|First|", "b|1|Second|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {}, {5});
  EXPECT_EQ(parse(description), (Records{{{"",
                                           {{"First", "5"},
                                            {"Second", "0"},
                                            {"SoftwareElementID", "1"},
                                            {"SoftwareElementState", ""},
                                            {"SourceNode", "1"},
                                            {"TargetOperatingSystem", ""}}}}}));
}

TEST_F(ParseVpdTest, CommandLineThatStandsLastIsNeverSent) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|1|Number|", "d|1|8|KRXSG_Last|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {5});
  answer(description, {8}, {6});
  EXPECT_EQ(parse(description).size(), 1U);
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"09 to SP 0"}));
}

TEST_F(ParseVpdTest, LoneCommandLineIsSentAndAddsNoRecord) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {5});
  EXPECT_EQ(parse(description), Records{});
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"09 to SP 0"}));
}

TEST_F(ParseVpdTest, FirstValueOfANameStays) {
  plugin.spCommandTable = {"d|1|9|KRXSG_DiagnosticVPD|", "b|1|Version|", "b|1|Twice|",
                           "b|1|Twice|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {1, 2, 3});
  const auto properties = parse(description).at(0).at("KRXSG_DiagnosticVPD");
  EXPECT_EQ(properties.at("Version"), "");
  EXPECT_EQ(properties.at("Twice"), "2");
}

TEST_F(ParseVpdTest, CommandLineWithTooFewBytesLeavesThemZero) {
  plugin.spCommandTable = {"d|3|9|", "b|1|Number|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9, 0, 0}, {5});
  EXPECT_EQ(parse(description).size(), 1U);
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{"090000 to SP 0"}));
}

// A line without a bar has no type of its own: no field at the head of a group, whatever the fields
// of the SP before were.
TEST_F(ParseVpdTest, FieldTypeDoesNotOutliveItsGroup) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "no bar", "b|1|Number|"};
  SimulatedSP description = dotCommandSP(2);
  for (const int spIndex : {0, 1}) {
    answer(description, {9}, {5}, spIndex);
    answer(description, {}, {6}, spIndex);  // the line without a bar, taken for a command
  }
  const auto record = [](const char* className, const char* node,
                         SPFirmwareVpd::PropertyMap more) -> ClassRecord {
    more.insert({{"SoftwareElementID", node},
                 {"SoftwareElementState", ""},
                 {"SourceNode", node},
                 {"TargetOperatingSystem", ""}});
    return {{className, more}};
  };
  EXPECT_EQ(parse(description),
            (Records{record("KRXSG_Test", "1", {}), record("", "1", {{"Number", "6"}}),
                     record("KRXSG_Test", "2", {}), record("", "2", {{"Number", "6"}})}));
}

// A command line is read as a field too before it ends its group: its count is the length that a
// field without one takes over.
TEST_F(ParseVpdTest, FieldLengthOutlivesItsGroup) {
  plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "r|3|Reserved|", "d|2|8|7|KRXSG_Other|", "r|",
                           "b|1|Number|"};
  SimulatedSP description = dotCommandSP();
  answer(description, {9}, {1});
  answer(description, {8, 7}, {10, 11, 12, 13});
  EXPECT_EQ(parse(description).at(1).at("KRXSG_Other").at("Number"), "12");
}

// An SP library that leaves its mark at each send, where the next one must not find it.
class ParseVpdSendTest : public ParseVpdTest {
 protected:
  struct Send {
    dotCmd* request;
    unsigned char* reply;
    int* replyLength;
    int spIndex;
    int bufferSize;
    int type;             // and what they held before
    std::ptrdiff_t used;  // bytes of the reply that are not zero
    int length;
  };

  ParseVpdSendTest() {
    plugin.spCommandTable = {"d|1|9|KRXSG_Test|", "b|1|Number|", "d|1|8|KRXSG_Other|",
                             "b|1|Number|"};
    ON_CALL(library, sendDotCommand)
        .WillByDefault([this](dotCmd* request, unsigned char* reply, int* length, int spIndex,
                              int size) {
          const auto used = size - std::count(reply, reply + size, 0);
          sends.push_back({request, reply, length, spIndex, size, request->type, used, *length});
          std::fill_n(reply, size, static_cast<unsigned char>(0xAA));
          *length = 77;
          request->type = 7;
          return sends.size() > failures;
        });
  }

  ::testing::NiceMock<MockSPLibrary> library;
  std::vector<Send> sends;
  std::size_t failures = 0;  // the first sends, which fail
};

TEST_F(ParseVpdSendTest, EveryCommandFindsAClearBufferAndLengthZero) {
  EXPECT_CALL(library, discoverSPs).WillOnce(::testing::Return(2));  // once for all of them
  plugin.getParseVPD(&library, ns);
  ASSERT_EQ(sends.size(), 4U);
  for (std::size_t i = 0; i < sends.size(); ++i) {
    EXPECT_EQ(sends[i].used, 0) << i;
    EXPECT_EQ(sends[i].length, 0) << i;
    EXPECT_EQ(sends[i].bufferSize, 2048) << i;
    EXPECT_EQ(sends[i].spIndex, i / 2) << i;
    EXPECT_EQ(sends[i].type, 2) << i;
  }
}

TEST_F(ParseVpdSendTest, SecondSendHasTheArgumentsOfTheFirstAsThatLeftThem) {
  failures = 1;
  EXPECT_CALL(library, discoverSPs).WillOnce(::testing::Return(1));
  plugin.getParseVPD(&library, ns);
  ASSERT_EQ(sends.size(), 3U);
  EXPECT_EQ(sends[1].request, sends[0].request);
  EXPECT_EQ(sends[1].reply, sends[0].reply);
  EXPECT_EQ(sends[1].replyLength, sends[0].replyLength);
  EXPECT_EQ(sends[1].spIndex, sends[0].spIndex);
  EXPECT_EQ(sends[1].bufferSize, 2048);
  EXPECT_EQ(sends[1].type, 7);
  EXPECT_EQ(sends[1].used, 2048);
  EXPECT_EQ(sends[1].length, 77);
}

}  // namespace
}  // namespace spfirmwarevpd::test
