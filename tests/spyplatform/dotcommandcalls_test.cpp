// SPDX-License-Identifier: Apache-2.0
//
// Dot commands as the SP driver sees them: which request, when it is made and destroyed, what its
// buffers hold, and that the descriptor walk stands on copies of its table's lines.
#include <algorithm>

#include "tests/spyplatform/spyfixture.h"

namespace spyplatform {
namespace {

class DotCommandCallsTest : public SpyTest {
 protected:
  // A walk over a table of the test's own.
  void walk(const std::vector<std::string>& table, int spCount = 1) {
    load();
    plugin->spCommandTable = table;
    when("discoverSPs", returns(spCount));
    takeTrace();
    records = plugin->getParseVPD(sp(), ns);
  }

  std::vector<SPFirmwareVpd::ClassRecord> records;
};

const std::vector<std::string> kTwoGroups = {"d|2|4|7|First|", "b|1|A|", "d|1|9|Second|", "a|2|B|"};

constexpr char kParsing[] =
    "Log(3, \"spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , description\")";

TEST_F(DotCommandCallsTest, RequestLivesUntilItsGroupIsDone) {
  whenSent("04 07", 0, replies({5}));
  whenSent("09", 0, replies({'x', 'y'}));
  walk(kTwoGroups);
  EXPECT_EQ(
      takeTrace(),
      (Trace{"discoverSPs() -> 1",
             "Log(3, \" starting to read data types of dotcommand \")",
             "Log(3, \"d|2|4|7|First|\")",
             "Log(3, \" reading dotcommand \")",
             "Log(3, \"4\")",
             "Log(3, \" reading dotcommand \")",
             "Log(3, \"7\")",
             "Log(3, \"dotcommand \")",
             "Log(3, \"47\")",
             "dotCmd#1(2, 2, 0, 04 07, one byte 00)",
             "sendDotCommand(dotCmd#1 04 07, 2048 zero bytes, length 0, SP 0, 2048) -> true, "
             "length 1",
             "Log(3, \" memset data \")",
             "Log(3, \"sent dotcommand to sp driver\")",
             kParsing,  // of the field
             kParsing,  // of the next command, which ends the group
             "~dotCmd#1",
             "Log(3, \" reading dotcommand \")",
             "Log(3, \"9\")",
             "Log(3, \"dotcommand \")",
             "Log(3, \"479\")",
             "dotCmd#2(2, 1, 0, 09, one byte 00)",
             "sendDotCommand(dotCmd#2 09, 2048 zero bytes, length 0, SP 0, 2048) -> true, length 2",
             "Log(3, \" memset data \")",
             "Log(3, \"sent dotcommand to sp driver\")",
             kParsing,
             "~dotCmd#2"}));
}

TEST_F(DotCommandCallsTest, EveryRequestOfTheWalkIsAnObjectOnTheHeap) {
  whenSent("04 07", 0, replies({5}));
  whenSent("09", 1, replies({5}));
  walk(kTwoGroups, 2);
  EXPECT_FALSE(state().made.empty());
  for (const Made& made : state().made) EXPECT_FALSE(made.onStack) << made.name;
}

TEST_F(DotCommandCallsTest, WalkHasOneReplyBufferAndOneReplyLength) {
  whenSent("04 07", 0, replies({5}));
  whenSent("09", 0, replies({5}));
  whenSent("04 07", 1, replies({5}));
  walk(kTwoGroups, 2);
  ASSERT_EQ(state().sent.size(), 5U);  // the last command fails and is sent once more
  for (const Sent& sent : state().sent) {
    EXPECT_EQ(sent.reply, state().sent.front().reply);
    EXPECT_EQ(sent.replyLength, state().sent.front().replyLength);
  }
}

// A driver may write before it fails: the second send finds what the first one left, the next
// command does not.
TEST_F(DotCommandCallsTest, SecondSendIsTheSameRequestAndTheNextCommandACleanOne) {
  whenever("sendDotCommand", {}, 1, [] {
    state().sent.back().reply[2] = 0xEE;
    *state().sent.back().replyLength = 77;
  });
  whenSent("04 07", 0, replies({1, 2, 3}), 2);
  walk(kTwoGroups);
  EXPECT_EQ(
      linesWith(takeTrace(), "otCom"),
      (Trace{"sendDotCommand(dotCmd#1 04 07, 2048 zero bytes, length 0, SP 0, 2048) -> false",
             "sendDotCommand(dotCmd#1 04 07, 2048 bytes 00 00 EE, then zeros, length 77, SP 0, "
             "2048) -> true, length 3",
             "sendDotCommand(dotCmd#2 09, 2048 zero bytes, length 0, SP 0, 2048) -> false",
             "sendDotCommand(dotCmd#2 09, 2048 zero bytes, length 0, SP 0, 2048) -> false"}));
}

// The line is consumed by then: one command of no bytes for each line that is left, sent twice.
TEST_F(DotCommandCallsTest, CommandOfNoBytesHandsOverAnArrayOfNoBytes) {
  walk(kTwoGroups);
  EXPECT_EQ(linesWith(takeTrace(), "otCmd#"),
            (Trace{"dotCmd#1(2, 2, 0, 04 07, one byte 00)",
                   "sendDotCommand(dotCmd#1 04 07, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "sendDotCommand(dotCmd#1 04 07, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "~dotCmd#1", "dotCmd#2(2, 0, 0, no bytes, one byte 00)",
                   "sendDotCommand(dotCmd#2, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "sendDotCommand(dotCmd#2, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "~dotCmd#2", "dotCmd#3(2, 0, 0, no bytes, one byte 00)",
                   "sendDotCommand(dotCmd#3, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "sendDotCommand(dotCmd#3, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "~dotCmd#3", "dotCmd#4(2, 0, 0, no bytes, one byte 00)",
                   "sendDotCommand(dotCmd#4, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "sendDotCommand(dotCmd#4, 2048 zero bytes, length 0, SP 0, 2048) -> false",
                   "~dotCmd#4"}));
  EXPECT_TRUE(records.empty());
}

// Puts other lines into the table, at another place in memory.
void replaceLines(std::vector<std::string>& table, std::size_t from) {
  table.reserve(2 * table.capacity());
  for (std::size_t i = from; i < table.size(); ++i) table[i] = "b|1|Other|";
  table.shrink_to_fit();
}

TEST_F(DotCommandCallsTest, CommandLineIsReadFromACopy) {
  whenever("Log", {" reading dotcommand "}, 1, [this] { replaceLines(plugin->spCommandTable, 0); });
  whenSent("04 07", 0, replies({5}));
  walk({"d|2|4|7|First|", "b|1|A|"});
  // The line behind it is loaded after the command was answered, as the table has it then.
  EXPECT_EQ(records,
            (std::vector<SPFirmwareVpd::ClassRecord>{{{"First",
                                                       {{"Other", "5"},
                                                        {"SoftwareElementID", "1"},
                                                        {"SoftwareElementState", ""},
                                                        {"SourceNode", "1"},
                                                        {"TargetOperatingSystem", ""}}}}}));
}

TEST_F(DotCommandCallsTest, FieldLineIsReadFromACopy) {
  whenever("Log", {"parsing for data type"}, 1,
           [this] { replaceLines(plugin->spCommandTable, 1); });
  whenSent("04 07", 0, replies({5, 6}));
  walk({"d|2|4|7|First|", "b|1|A|", "b|1|B|"});
  EXPECT_EQ(records,
            (std::vector<SPFirmwareVpd::ClassRecord>{{{"First",
                                                       {{"A", "5"},
                                                        {"Other", "6"},
                                                        {"SoftwareElementID", "1"},
                                                        {"SoftwareElementState", ""},
                                                        {"SourceNode", "1"},
                                                        {"TargetOperatingSystem", ""}}}}}));
}

TEST_F(DotCommandCallsTest, FailedCommandIsNotReadAgainFromTheTable) {
  whenever("sendDotCommand", {}, 1, [this] { replaceLines(plugin->spCommandTable, 0); });
  walk({"d|2|4|7|First|", "b|1|A|"});
  EXPECT_EQ(linesWith(takeTrace(), "otCmd#2("), Trace{"dotCmd#2(2, 0, 0, no bytes, one byte 00)"});
}

TEST_F(DotCommandCallsTest, ComponentRequestIsDestroyedBehindItsReplysHandling) {
  const struct {
    const char* what;
    Outcome planar;
    Trace handling;  // between the send and the destruction
  } cases[] = {
      {"answered",
       replies(planarRecord()),
       {"namespace.GetClass(\"KRXSG_Vpd\", {asker: \"plug-ins\"}) throws TVELException(5)",
        "Log(0, \"Error adding KRXSG_VPD class\")"}},
      {"answered with nothing",
       replies({}),
       {"Log(3, \"getMachineType() completed.\")", "fdrWriteLog(3, \"planar VPD not available\")"}},
      {"not answered",
       {},
       {"Log(3, \"getMachineType() completed.\")", "fdrWriteLog(3, \"planar VPD not available\")"}},
  };
  for (const auto& c : cases) {
    reset();
    load();
    when("discoverSPs", returns(1));
    when("GetClass", refuses(5));
    whenSent("04 03 05 02 01 / 10 00 10 00", 0, c.planar);
    EXPECT_EQ(plugin->getVPDdata(sp(), ns).status, 0) << c.what;
    const Trace calls = takeTrace();
    const auto sent = std::ranges::find_if(calls, [](const std::string& line) {
      return line.starts_with("sendDotCommand") && line.find("/ 10 00 10 00") != std::string::npos;
    });
    ASSERT_NE(sent, calls.end()) << c.what;
    Trace handling(sent + 1, calls.end());
    ASSERT_FALSE(handling.empty()) << c.what;
    EXPECT_EQ(handling.back().substr(0, 8), "~dotCmd#") << c.what;
    handling.pop_back();
    EXPECT_EQ(handling, c.handling) << c.what;
  }
}

// Every request that was made is destroyed, also behind an exception that nobody expected.
TEST_F(DotCommandCallsTest, NoRequestOutlivesAForeignException) {
  for (const char* operation : {"sendDotCommand", "GetClass", "SetProperty", "fdrWriteLog"}) {
    reset();
    load();
    when("discoverSPs", returns(1));
    whenSent("04 03 05 02 01 / 10 00 10 00", 0, replies(planarRecord()));
    when(operation, throwsForeign());
    EXPECT_THROW(plugin->getVPDdata(sp(), ns), Foreign) << operation;
    const Trace calls = takeTrace();
    EXPECT_EQ(linesWith(calls, "~dotCmd#").size(), state().made.size()) << operation;
  }
}

}  // namespace
}  // namespace spyplatform
