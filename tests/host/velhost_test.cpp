// SPDX-License-Identifier: Apache-2.0
//
// The program as people run it: what it prints where, and its exit status.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/host/programrun.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class WideScreen {
 public:
  WideScreen() { ::setenv("COLUMNS", "400", 1); }
  ~WideScreen() { ::unsetenv("COLUMNS"); }
  WideScreen(const WideScreen&) = delete;
  WideScreen& operator=(const WideScreen&) = delete;
};

class Velhost : public ::testing::Test {
 protected:
  Velhost() : folder_(fs::temp_directory_path() / ("velhost-" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
  }
  ~Velhost() override { fs::remove_all(folder_); }

  std::string put(const std::string& name, const std::string& text) const {
    const fs::path file = folder_ / name;
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }

  std::string bareMachine() const {
    return put("bare.json", R"({ "format": "vel-machine/1", "name": "bare", "machine_type": "",
                                 "smbios": {} })");
  }

  Words query(const Words& more) const {
    Words words{"query", "--plugin", TEST_PLUGIN, "--machine", bareMachine()};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  static ProgramOutcome run(const Words& arguments) { return runProgram(VELHOST, {arguments, ""}); }

  static std::string read(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  fs::path folder_;
};

// One line on standard error that names the place, status 2, nothing on standard output.
void expectBadInput(const ProgramOutcome& outcome, const std::string& place,
                    const std::string& what) {
  EXPECT_EQ(2, outcome.status) << what;
  EXPECT_EQ("", outcome.out) << what;
  EXPECT_EQ(1, std::count(outcome.err.begin(), outcome.err.end(), '\n')) << what << outcome.err;
  EXPECT_EQ(0U, outcome.err.find("velhost: ")) << what << outcome.err;
  EXPECT_NE(std::string::npos, outcome.err.find(place)) << what << ": " << outcome.err;
}

TEST_F(Velhost, BadUsageIsToldInOneLine) {
  const struct {
    const char* what;
    Words arguments;
    const char* place;
  } cases[] = {
      {"no command",
       {},
       "query, explain, diff, summary, report, record, check, collectors or "
       "classes"},
      {"unknown command", {"fly"}, "fly"},
      {"unknown option", {"query", "--fly"}, "--fly"},
      {"unknown option of check", {"check", "--fly", "x"}, "--fly"},
      {"unknown format", {"query", "--format", "xml"}, "xml"},
      {"bytes of an inventory", {"query", "--bytes", "--format", "inventory"}, "--format trace"},
      {"repeat of none", {"query", "--repeat", "0"}, "--repeat"},
      {"log level that is no number", {"query", "--log-level", "x"}, "--log-level"},
      {"option without its value", {"query", "--machine"}, "--machine"},
      {"line feed in an option", {"query", "--fly\nhigh"}, "--fly\\nhigh"},
      {"check of nothing", {"check"}, "FILE"},
      {"unknown class of the schema", {"classes", "KRXSG_None"}, "KRXSG_None"},
  };
  for (const auto& c : cases) expectBadInput(run(c.arguments), c.place, c.what);
}

TEST_F(Velhost, BadQueriesAreRefusedBeforeAnythingRuns) {
  const struct {
    const char* what;
    Words arguments;
    const char* place;
  } cases[] = {
      {"unknown class", {"KRXSG_Vpd", "KRXSG_None"}, "\"KRXSG_None\""},
      {"class in other letters", {"krxsg_vpd"}, "\"krxsg_vpd\""},
      {"empty class", {""}, "\"\""},
      {"output in no folder", {"--output", "/nowhere/none/out"}, "/nowhere/none/out"},
      {"output to a folder", {"--output", "/tmp"}, "/tmp"},
      {"empty output", {"--output", ""}, "--output"},
  };
  for (const auto& c : cases) expectBadInput(run(query(c.arguments)), c.place, c.what);
}

TEST_F(Velhost, APluginThatCannotBeLoadedIsNamed) {
  const std::string machine = bareMachine();
  const std::string text = put("text.pi.so", "no shared object");
  for (const std::string& plugin : {std::string("/nowhere/none.pi.so"), text}) {
    expectBadInput(run({"query", "--machine", machine, "--plugin", plugin}), plugin, plugin);
  }
}

TEST_F(Velhost, BadMachineFilesAreToldInOneLineByQueryAndCheck) {
  const std::string head = R"({ "format": "vel-machine/1", "name": "x", )";
  put("text.dmi", "this is no dump");
  const struct {
    const char* name;
    std::string text;
    const char* place;
  } cases[] = {
      {"empty.json", "", "empty.json:1:1: "},
      {"broken.json", "{\n  \"format\": \"vel-machine/1\",,\n}", "broken.json:2:29: "},
      {"unknownkey.json", head + R"("smbus": {} })", "unknownkey.json: /smbus: "},
      {"oddhex.json", head + R"("smbios": { "structures": [ { "type": 0, "data": "012" } ] } })",
       "oddhex.json: /smbios/structures/0/data: "},
      {"longtext.json", head + R"("sp": { "dot_commands": [ { "command": "04",
                 "reply": [ { "text": "abc", "size": 2 } ] } ] } })",
       "longtext.json: /sp/dot_commands/0/reply/0/text: "},
      {"nodump.json", head + R"("smbios": { "dump": "none.dmi" } })",
       "nodump.json: /smbios/dump: "},
      {"textdump.json", head + R"("smbios": { "dump": "text.dmi" } })",
       "textdump.json: /smbios/dump: "},
      {"folderdump.json", head + R"("smbios": { "dump": "." } })",
       "folderdump.json: /smbios/dump: "},
      {"format.json", R"({ "format": "vel-machine/2", "name": "x" })", "format.json: /format: "},
      {"twice.json", head + R"("sp": {}, "sp": {} })", "twice.json: /sp: "},
      {"class.json", head + R"("instances": { "KRXSG_None": [] } })",
       "class.json: /instances/KRXSG_None: "},
      {"feed.json", head + R"("a\nb": 1 })", "feed.json: /a\\nb: "},
  };
  for (const auto& c : cases) {
    const std::string file = put(c.name, c.text);
    expectBadInput(run({"check", file}), folder_.string() + "/" + c.place, c.name);
    expectBadInput(run({"query", "--plugin", TEST_PLUGIN, "--machine", file}),
                   folder_.string() + "/" + c.place, c.name);
  }
  for (const std::string& file : {folder_.string() + "/none.json", folder_.string()}) {
    expectBadInput(run({"check", file}), file + ": ", file);
    expectBadInput(run({"query", "--plugin", TEST_PLUGIN, "--machine", file}), file + ": ", file);
  }
}

TEST_F(Velhost, CheckNamesTheGoodFilesAndTheBadOnes) {
  const std::string good = bareMachine();
  const ProgramOutcome outcome = run({"check", good, "/nowhere/none.json", good});
  EXPECT_EQ(2, outcome.status);
  EXPECT_EQ(good + ": ok\n" + good + ": ok\n", outcome.out);
  EXPECT_EQ("velhost: /nowhere/none.json: cannot be read: No such file or directory\n",
            outcome.err);
  EXPECT_EQ(0, run({"check", good}).status);
}

TEST_F(Velhost, HelpAndVersionGoToStandardOutput) {
  const ProgramOutcome help = run({"--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_NE(std::string::npos, help.out.find("Usage: velhost"));
  EXPECT_EQ("", help.err);
  const ProgramOutcome version = run({"--version"});
  EXPECT_EQ(0, version.status);
  EXPECT_EQ("velhost 1.0.0\n", version.out);
}

TEST_F(Velhost, AnAnsweredQueryPrintsJson) {
  const ProgramOutcome outcome = run(query({"KRXSG_Vpd", "KRXSG_cKVM", "--format", "json"}));
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ(R"({
  "KRXSG_Vpd": [
    {
      "Name": "DIMM 1"
    },
    {
      "Name": "DIMM 2"
    }
  ],
  "KRXSG_cKVM": []
}
)",
            outcome.out);
  EXPECT_EQ("", outcome.err);
}

TEST_F(Velhost, TheTableIsTheDefault) {
  const ProgramOutcome outcome = run(query({"KRXSG_Vpd"}));
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ(
      "TestPlugin 0.9 on bare (machine file)\n"
      "\n"
      "KRXSG_Vpd  (2 instances)  Vital product data of a component\n"
      "  Name\n"
      "  DIMM 1\n"
      "  DIMM 2\n",
      outcome.out);
}

// A silent SP: what a table says of it, and who else says that something is missing.
TEST_F(Velhost, WhatShouldHaveAnsweredEndsWithStatus3) {
  const std::string silent = put("silent.json", R"({ "format": "vel-machine/1", "name": "silent",
    "smbios": {}, "sp": { "kind": "dot-command", "answers": false } })");
  const struct {
    const char* what;
    Words arguments;
    int status;
    const char* out;  // its end
    const char* err;
  } cases[] = {
      {"table",
       {"KRXSG_cKVM", "KRXSG_HardwareRevisionLevel", "KRXSG_SPROMFirmwareVPDBootROM"},
       3,
       "Without instances:\n"
       "  KRXSG_cKVM                     absent      the machine type is not known, and\n"
       "                                             only some have one\n"
       "  KRXSG_HardwareRevisionLevel    unanswered  the service processor does not\n"
       "                                             answer dot commands; check it and\n"
       "                                             its driver\n"
       "  KRXSG_SPROMFirmwareVPDBootROM  unanswered  as KRXSG_HardwareRevisionLevel\n",
       ""},
      {"json",
       {"KRXSG_HardwareRevisionLevel", "KRXSG_Vpd", "--format", "json", "--log-level", "-1"},
       3,
       "{\n  \"KRXSG_HardwareRevisionLevel\": [],\n  \"KRXSG_Vpd\": []\n}\n",
       "velhost: KRXSG_HardwareRevisionLevel is unanswered: the service processor does not answer "
       "dot commands; check it and its driver; and 1 more, --format table tells\n"},
      {"trace",
       {"KRXSG_HardwareRevisionLevel", "--format", "trace", "--log-level", "-1"},
       0,
       "]\n}\n",
       ""},
      {"truly absent, and never filled",
       {"KRXSG_cKVM", "KRXSG_DeviceDriver", "--format", "json", "--log-level", "-1"},
       0,
       "}\n",
       ""},
      {"in the first of two requests",
       {"KRXSG_Vpd", "--repeat", "2", "--format", "json", "--log-level", "-1"},
       3,
       "}\n",
       "velhost: KRXSG_Vpd is unanswered: the service processor does not answer dot commands; "
       "check it and its driver\n"},
  };
  for (const auto& c : cases) {
    Words words{"query", "--machine", silent};
    words.insert(words.end(), c.arguments.begin(), c.arguments.end());
    const ProgramOutcome outcome = run(words);
    EXPECT_EQ(c.status, outcome.status) << c.what;
    EXPECT_TRUE(outcome.out.ends_with(c.out)) << c.what << outcome.out;
    EXPECT_EQ(c.err, outcome.err) << c.what;
  }
}

// Somebody else's class, in a schema file of its own, and the collector that asks for it.
TEST_F(Velhost, AStrangersClassHasItsStatesToo) {
  fs::create_directories(folder_ / "bin");
  fs::create_directories(folder_ / "share" / "vel" / "schema");
  fs::create_symlink(fs::path(VELHOST).parent_path().parent_path() / "lib", folder_ / "lib");
  fs::copy_file(VELHOST, folder_ / "bin" / "velhost");
  put("share/vel/schema/all.mof", run({"classes", "--format", "mof"}).out);
  put("share/vel/schema/mine.mof", R"([Provider("TestPlugin")] class MINE_Fan {
    [MappingStrings { "IPMI.VEL|06 52|data 7F|bytes 9-|text" }] string Level; };)");
  const struct {
    const char* what;
    const char* sp;
    int status;
    const char* line;
  } cases[] = {
      {"refused", R"({ "request": "01 20 06 00 52", "reply": "01 20 07 00 C1" })", 3,
       "  MINE_Fan  unanswered  the BMC refused command 06 52 with completion code C1\n"},
      {"not answered", R"({ "request": "01 20 06 00 53", "reply": "01 20 07 00 00" })", 3,
       "  MINE_Fan  unanswered  the BMC did not answer command 06 52\n"},
      {"answered", R"({ "request": "01 20 06 00 52", "reply": "01 20 07 00 00" })", 0,
       "  MINE_Fan  absent  what was asked of it was answered, and named none\n"},
  };
  for (const auto& c : cases) {
    const std::string machine =
        put("fan.json", R"({ "format": "vel-machine/1", "name": "fan", "smbios": {}, "sp": {
          "ipmi_commands": [ )" +
                            std::string(c.sp) + " ] } }");
    const Words words{"query", "MINE_Fan", "--plugin", TEST_PLUGIN, "--machine", machine};
    const ProgramOutcome outcome = runProgram((folder_ / "bin" / "velhost").string(), {words, ""});
    EXPECT_EQ(c.status, outcome.status) << c.what << outcome.err;
    EXPECT_TRUE(outcome.out.ends_with(c.line)) << c.what << outcome.out;
  }
}

TEST_F(Velhost, WhyTellsEachStepThatFailed) {
  const std::string machine = put("half.json", R"({ "format": "vel-machine/1", "name": "half",
    "smbios": {}, "sp": { "kind": "dot-command", "count": 2, "dot_commands": [
      { "command": "04 03 05 06 01", "reply": "41" }, { "command": "04 03 05 06 02", "reply": "41" },
      { "sp": 1, "command": "04 03 05 06 01", "reply": "41" } ] } })");
  const Words words{"query", "KRXSG_SPROMFirmwareVPDBootROM", "--why", "--machine", machine};
  const std::string why =
      "Steps that failed:\n"
      "  KRXSG_SPROMFirmwareVPDBootROM\n"
      "    command 04 03 05 06 02 was refused twice by SP 2\n";
  const ProgramOutcome table = run(words);
  EXPECT_EQ(0, table.status);
  EXPECT_TRUE(table.out.ends_with("\n\n" + why)) << table.out;
  EXPECT_EQ("", table.err);
  Words json = words;
  json.insert(json.end(), {"--format", "json", "--log-level", "-1"});
  const ProgramOutcome document = run(json);
  EXPECT_TRUE(document.out.ends_with("]\n}\n")) << document.out;
  EXPECT_EQ(why, document.err);
}

TEST_F(Velhost, ARefusedClassShowsWhatWasPublishedBeforeAndEndsWithStatus1) {
  const ProgramOutcome outcome = run(query({"KRXSG_Vpd", "KRXSG_USBDevice", "--format", "json"}));
  EXPECT_EQ(1, outcome.status);
  EXPECT_NE(std::string::npos, outcome.out.find("DIMM 2"));
  EXPECT_EQ("velhost: the plug-in refused the request: TVELException code 2: not served\n",
            outcome.err);
}

TEST_F(Velhost, EveryRequestOfARepeatIsMade) {
  const ProgramOutcome outcome = run(query(
      {"KRXSG_SystemBIOS", "--repeat", "3", "--reinit", "--log-level", "3", "--format", "trace"}));
  EXPECT_EQ(1, outcome.status);
  const std::string refused =
      "velhost: the plug-in refused the request: std::runtime_error: it broke\n";
  const std::string init = "velhost: log[3]: Init\n";
  EXPECT_EQ(init + refused + init + refused + init + refused, outcome.err);
  std::size_t errors = 0;
  for (auto at = outcome.out.find("it broke"); at != std::string::npos;
       at = outcome.out.find("it broke", at + 1)) {
    ++errors;
  }
  EXPECT_EQ(3U, errors);
}

TEST_F(Velhost, WithoutReinitInitRunsOnce) {
  const ProgramOutcome outcome =
      run(query({"KRXSG_PostBIOSVPD", "--repeat", "3", "--log-level", "3"}));
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("velhost: log[3]: Init\n", outcome.err);
}

TEST_F(Velhost, LogEntriesUpToTheLevelAreLinesOfTheirOwn) {
  const struct {
    Words level;
    const char* lines;
  } cases[] = {
      {{"--format", "json"}, "velhost: log[1]: two\\nlines \\xff\n"},
      {{"--format", "table"}, ""},
      {{"--log-level", "0"}, ""},
      {{"--log-level", "1"}, "velhost: log[1]: two\\nlines \\xff\n"},
      {{"--log-level", "3"},
       "velhost: log[3]: Init\nvelhost: log[3]: progress\nvelhost: log[1]: two\\nlines \\xff\n"},
  };
  for (const auto& c : cases) {
    Words words{"KRXSG_DeviceDriver"};
    words.insert(words.end(), c.level.begin(), c.level.end());
    EXPECT_EQ(c.lines, run(query(words)).err);
  }
}

TEST_F(Velhost, TheOutputFileIsWrittenWholeOrNotAtAll) {
  const std::string file = put("out.json", "old");
  const ProgramOutcome written = run(query({"KRXSG_cKVM", "--format", "json", "--output", file}));
  EXPECT_EQ(0, written.status);
  EXPECT_EQ("", written.out);
  EXPECT_EQ("{\n  \"KRXSG_cKVM\": []\n}\n", read(file));
  EXPECT_EQ(2, run({"query", "--machine", bareMachine(), "--plugin", "/nowhere/none.pi.so",
                    "--output", file})
                   .status);
  EXPECT_EQ("{\n  \"KRXSG_cKVM\": []\n}\n", read(file));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
}

TEST_F(Velhost, AnOutputCalledDevStdoutIsWrittenWhereStandardOutputGoes) {
  const std::string file = put("redirected", "");
  const ProgramOutcome outcome = runProgram(
      VELHOST, {query({"KRXSG_cKVM", "--format", "json", "--output", "/dev/stdout"}), file});
  EXPECT_EQ(0, outcome.status) << outcome.err;
  EXPECT_EQ("{\n  \"KRXSG_cKVM\": []\n}\n", read(file));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
}

TEST_F(Velhost, AFullStandardOutputIsNoticed) {
  for (const Words& words : {query({"KRXSG_Vpd"}), Words{"classes"}, Words{"--help"}}) {
    const ProgramOutcome outcome = runProgram(VELHOST, {words, "/dev/full"});
    EXPECT_EQ(2, outcome.status) << words[0];
    EXPECT_EQ("velhost: standard output: cannot be written: No space left on device\n",
              outcome.err);
  }
}

TEST_F(Velhost, AStandardOutputThatDoesNotWaitGetsTheWholeAnswer) {
  for (const Words& words : {query({"--format", "trace", "--repeat", "20"}), Words{"classes"}}) {
    const ProgramOutcome kept = run(words);
    const ProgramOutcome piped = runProgram(VELHOST, {words, "", {}, true});
    EXPECT_EQ(kept.status, piped.status) << words[0] << piped.err;
    EXPECT_LT(4096U, kept.out.size()) << words[0];
    EXPECT_EQ(kept.out, piped.out) << words[0];
  }
}

TEST_F(Velhost, WithoutAStandardStreamTheOutputFileHoldsTheAnswerAlone) {
  const std::string file = (folder_ / "out.json").string();
  const Words words = query({"KRXSG_DeviceDriver", "--log-level", "3", "--output", file});
  const ProgramOutcome whole = run(words);
  const std::string answer = read(file);
  EXPECT_NE("", answer);
  EXPECT_NE("", whole.err);
  for (const std::vector<int>& closed :
       std::vector<std::vector<int>>{{0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}}) {
    fs::remove(file);
    const ProgramOutcome outcome = runProgram(VELHOST, {words, "", closed});
    EXPECT_EQ(0, outcome.status) << ::testing::PrintToString(closed);
    EXPECT_EQ(answer, read(file)) << ::testing::PrintToString(closed);
    EXPECT_EQ(closed.back() == 2 ? "" : whole.err, outcome.err) << ::testing::PrintToString(closed);
  }
}

TEST_F(Velhost, AClosedStandardOutputIsNoticed) {
  const Words words = query({"KRXSG_Vpd"});
  const ProgramOutcome outcome = runProgram(VELHOST, {words, "", {1}});
  EXPECT_EQ(2, outcome.status);
  EXPECT_EQ("velhost: standard output: cannot be written: Bad file descriptor\n", outcome.err);
  Words toDevStdout = words;
  toDevStdout.insert(toDevStdout.end(), {"--output", "/dev/stdout"});
  expectBadInput(runProgram(VELHOST, {toDevStdout, "", {1}}),
                 "/dev/stdout: cannot be written: ", "closed, by name");
}

TEST_F(Velhost, ADumpThatIsNoRegularFileIsRefusedAndNotWaitedFor) {
  const std::string head = R"({ "format": "vel-machine/1", "name": "x", "smbios": { "dump": ")";
  const fs::path fifo = folder_ / "fifo";
  ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
  const struct {
    const char* what;
    std::string dump;
    std::string complaint;
  } cases[] = {
      {"pipe", "fifo", "cannot read " + fifo.string() + ": it is a pipe, not a regular file"},
      {"device", "/dev/zero", "cannot read /dev/zero: it is a device, not a regular file"},
      {"zero byte", R"(fifo\u0000)", "a zero byte would end the name"},
  };
  for (const auto& c : cases) {
    const std::string file = put("machine.json", head + c.dump + "\" } }");
    const ProgramOutcome outcome = run({"check", file});
    EXPECT_EQ(2, outcome.status) << c.what;
    EXPECT_EQ("velhost: " + file + ": /smbios/dump: " + c.complaint + "\n", outcome.err);
  }
}

TEST_F(Velhost, AMachineFileMayBeAPipeButNoDevice) {
  const std::string file = bareMachine();
  const std::string shell = "\"$0\" check <(cat '" + file + "')";
  const ProgramOutcome piped = runProgram("/bin/bash", {{"-c", shell, VELHOST}, ""});
  EXPECT_EQ(0, piped.status) << piped.err;
  EXPECT_EQ(0U, piped.out.find("/dev/fd/")) << piped.out;
  EXPECT_NE(std::string::npos, piped.out.find(": ok\n")) << piped.out;
  const ProgramOutcome device = run({"check", "/dev/zero", file});
  EXPECT_EQ(2, device.status);
  EXPECT_EQ("velhost: /dev/zero: cannot be read: it is a device, not a regular file\n", device.err);
  EXPECT_EQ(file + ": ok\n", device.out);
}

TEST_F(Velhost, AnAnswerAboveTheLimitOfFileSizesIsNoticed) {
  const std::string file = put("out", "old");
  // A pipe has no limit; what a build for coverage counted would have.
  const std::string shell = "ulimit -f 0; LLVM_PROFILE_FILE=/dev/null exec \"$0\" \"$@\" 2>&1";
  Words words{"-c", shell, VELHOST};
  for (const std::string& word : query({"KRXSG_Vpd", "--output", file})) words.push_back(word);
  const ProgramOutcome outcome = runProgram("/bin/bash", {words, "", {}, true});
  EXPECT_EQ(2, outcome.status);
  EXPECT_EQ("velhost: " + file + ": cannot be written: File too large\n", outcome.out);
  EXPECT_EQ("old", read(file));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
}

TEST_F(Velhost, ClassesShowTheSchema) {
  const ProgramOutcome table = run({"classes", "KRXSG_QLA_ComputerSystem"});
  EXPECT_EQ(0, table.status);
  EXPECT_NE(std::string::npos, table.out.find("  SourceNode   uint8\n  Description  string\n"));
  const ProgramOutcome all = run({"classes", "--format", "json"});
  EXPECT_EQ(0, all.status);
  EXPECT_NE(std::string::npos, all.out.find("\"name\": \"KRXSG_SystemBIOSElement\""));
}

TEST_F(Velhost, AbstractClassesAreShownToThoseWhoNameThem) {
  for (const char* const format : {"table", "json"}) {
    const ProgramOutcome all = run({"classes", "--format", format});
    EXPECT_EQ(std::string::npos, all.out.find("CIM_")) << format;
  }
  EXPECT_EQ(
      "CIM_BIOSElement  Firmware that starts a system\n"
      "  Version                string\n"
      "  SoftwareElementID      string\n"
      "  SoftwareElementState   uint16\n"
      "  TargetOperatingSystem  uint16\n"
      "  PrimaryBIOS            boolean\n"
      "  ReleaseDate            datetime\n",
      run({"classes", "CIM_BIOSElement"}).out);
}

// The program finds its schema beside itself, so a copy of it beside a printed one reads that.
TEST_F(Velhost, ClassesPrintedAsMofAreReadBack) {
  const ProgramOutcome printed = run({"classes", "--format", "mof"});
  EXPECT_EQ(0, printed.status) << printed.err;
  fs::create_directories(folder_ / "bin");
  fs::create_directories(folder_ / "share" / "vel" / "schema");
  fs::create_symlink(fs::path(VELHOST).parent_path().parent_path() / "lib", folder_ / "lib");
  fs::copy_file(VELHOST, folder_ / "bin" / "velhost");
  put("share/vel/schema/all.mof", printed.out);
  const std::string copy = (folder_ / "bin" / "velhost").string();
  for (const char* const format : {"table", "json", "mof"}) {
    const Words words{"classes", "--format", format};
    const ProgramOutcome again = runProgram(copy, {words, ""});
    EXPECT_EQ("", again.err) << format;
    EXPECT_EQ(run(words).out, again.out) << format;
  }
  put("share/vel/schema/zz.mof", "class Own_Thing : CIM_LogicalDevice {\n  uint32 size;\n};\n");
  EXPECT_EQ(
      "velhost: " + (folder_ / "share/vel/schema/zz.mof").string() +
          ":2:3: no property is of type \"uint32\" here; the types are string, boolean, uint8,"
          " uint16, uint64, datetime\n",
      runProgram(copy, {{"classes"}, ""}).err);
  put("share/vel/schema/zz.mof", "class Own_Thing : CIM_LogicalDevice { uint8 size; };\n");
  EXPECT_EQ(
      "Own_Thing  Device, as the system sees it\n"
      "  DeviceID     string\n"
      "  Description  string\n"
      "  size         uint8\n",
      runProgram(copy, {{"classes", "Own_Thing"}, ""}).out);
  EXPECT_EQ(0, runProgram(copy, {{"--version"}, ""}).status);
}

TEST_F(Velhost, MofOfAClassHasWhatTheClassNeeds) {
  const ProgramOutcome one = run({"classes", "--format", "mof", "KRXSG_USBDevice"});
  EXPECT_EQ(0, one.status);
  EXPECT_EQ(0U, one.out.find("Qualifier Abstract : boolean = FALSE, "));
  EXPECT_NE(std::string::npos, one.out.find("\nclass CIM_LogicalDevice {\n"));
  EXPECT_NE(std::string::npos, one.out.find("\nclass KRXSG_USBDevice : CIM_LogicalDevice {\n"));
  EXPECT_EQ(std::string::npos, one.out.find("KRXSG_TapeDrive"));
  EXPECT_EQ(std::string::npos, one.out.find("MaxLen"));
}

TEST_F(Velhost, ARecordingIsAMachineFileThatIsTheOwnersAlone) {
  const std::string file = (folder_ / "recorded.json").string();
  const Words words{"record", "--plugin", TEST_PLUGIN, "--machine", bareMachine()};
  const ProgramOutcome printed = run(words);
  Words toFile = words;
  toFile.insert(toFile.end(), {"--output", file});
  const ProgramOutcome written = run(toFile);
  // The test plug-in ends the request with an exception; what was asked before is recorded.
  const std::string refused =
      "velhost: the plug-in refused the request: (anonymous namespace)::OwnError\n";
  EXPECT_EQ(1, printed.status);
  EXPECT_EQ(refused, printed.err);
  EXPECT_NE(std::string::npos, printed.out.find("\"request\": \"01 20 06 00 52 01 00 00 00 7F\""));
  EXPECT_EQ(1, written.status);
  EXPECT_EQ("", written.out);
  EXPECT_EQ(printed.out, read(file));
  EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(file).permissions());
  EXPECT_EQ(file + ": ok\n", run({"check", file}).out);
}

TEST_F(Velhost, ARecordingReplacesAFileOnlyByForce) {
  const std::string file = put("kept.json", "old");
  Words words{"record", "--plugin", TEST_PLUGIN, "--machine", bareMachine(), "--output", file};
  expectBadInput(run(words), file + ": is there already; --force", "existing file");
  EXPECT_EQ("old", read(file));
  words.emplace_back("--force");
  EXPECT_EQ(1, run(words).status);
  EXPECT_EQ(file + ": ok\n", run({"check", file}).out);
  EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(file).permissions());
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
}

TEST_F(Velhost, ARecordingIsNotLedAstrayInASharedFolder) {
  if (::geteuid() != 0) GTEST_SKIP() << "making another user's link needs root";
  ASSERT_EQ(0, ::chmod(folder_.c_str(), 01777));
  const std::string kept = put("kept.json", "old");
  const std::string link = (folder_ / "link.json").string();
  fs::create_symlink(kept, link);
  ASSERT_EQ(0, ::lchown(link.c_str(), 65534, 65534));
  expectBadInput(run({"record", "--plugin", TEST_PLUGIN, "--machine", bareMachine(), "--force",
                      "--output", link}),
                 link + ": cannot be written: ", "another user's link");
  EXPECT_EQ("old", read(kept));
}

TEST_F(Velhost, ARecordingHoldsNoCredentials) {
  const std::string machine = put("secret.json", R"({ "format": "vel-machine/1", "name": "x",
    "smbios": { "structures": [
      { "type": 11, "data": "02", "strings": ["io.systemd.credential:a=hidden", "KRX"] },
      { "raw": ["0B 05 01 00 01", { "text": "io.systemd.credential.binary:b=aGlkZGVu" }] } ] } })");
  const std::string recorded = run({"record", "--plugin", TEST_PLUGIN, "--machine", machine}).out;
  EXPECT_NE(std::string::npos, recorded.find("2 credential strings left out"));
  EXPECT_NE(std::string::npos, recorded.find(R"("raw": "0B 05 01 00 01 20")"));
  for (const char* const secret : {"hidden", "io.systemd", "61 47 6C", "69 6F 2E"}) {
    EXPECT_EQ(std::string::npos, recorded.find(secret)) << secret;
  }
  const std::string again = put("again.json", recorded);
  EXPECT_EQ(recorded, run({"record", "--plugin", TEST_PLUGIN, "--machine", again}).out);
}

TEST_F(Velhost, ARecordingOfWhatCannotBeReadIsRefused) {
  const std::string machine = put("odd.json", "{}");
  const std::string file = (folder_ / "none.json").string();
  expectBadInput(run({"record", "--machine", machine, "--output", file}),
                 "odd.json: ", "no format");
  EXPECT_FALSE(fs::exists(file));
}

// What the machine that the tests run on lets velhost read: 0, or why not. The guests of tests/vm are
// machines of each kind.
int errorOfLive(const char* file) { return ::access(file, R_OK) == 0 ? 0 : errno; }

constexpr char kLiveTable[] = "/sys/firmware/dmi/tables/DMI";
constexpr char kLiveBmc[] = "/dev/ipmi0";

TEST_F(Velhost, ALiveMachineThatShowsItsTablesIsAnswered) {
  if (errorOfLive(kLiveTable) != 0) GTEST_SKIP() << "this machine shows no SMBIOS tables";
  if (errorOfLive(kLiveBmc) == EACCES) GTEST_SKIP() << "this machine's BMC is root's";
  const ProgramOutcome outcome =
      run({"query", "KRXSG_Vpd", "--plugin", TEST_PLUGIN, "--format", "json"});
  EXPECT_EQ(0, outcome.status);
  EXPECT_NE(std::string::npos, outcome.out.find("DIMM 1"));
  EXPECT_EQ("", outcome.err);
}

TEST_F(Velhost, ALiveMachineWithoutTablesSaysWhatToDo) {
  if (errorOfLive(kLiveTable) != ENOENT) GTEST_SKIP() << "this machine has SMBIOS tables";
  if (errorOfLive(kLiveBmc) == EACCES) GTEST_SKIP() << "this machine's BMC is root's";
  const ProgramOutcome outcome =
      run({"query", "KRXSG_Vpd", "--plugin", TEST_PLUGIN, "--format", "json"});
  EXPECT_EQ(3, outcome.status);
  EXPECT_NE(std::string::npos, outcome.out.find("DIMM 1"));
  EXPECT_EQ(
      "velhost: cannot read /sys/firmware/dmi/tables/DMI: No such file or directory; this system "
      "shows none; name a machine file with --machine FILE\n",
      outcome.err);
}

TEST_F(Velhost, AllMachineFilesOfTheFolderPassTheCheck) {
  Words words{"check"};
  std::string expected;
  for (const auto& entry : fs::directory_iterator(MACHINES)) {
    if (entry.path().extension() != ".json") continue;
    words.push_back(entry.path().string());
    const bool isSchema = entry.path().filename() == "machine.schema.json";
    expected += words.back() + (isSchema ? ": a JSON Schema, passed over\n" : ": ok\n");
  }
  const ProgramOutcome outcome = run(words);
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ(expected, outcome.out);
  EXPECT_EQ("", outcome.err);
}

TEST_F(Velhost, CollectorsAreListedWithTheirClasses) {
  const WideScreen wide;  // paths have room in a line
  const ProgramOutcome outcome = run({"collectors"});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_NE(std::string::npos, outcome.out.find("libdeviceinventory.pi.so\n  KRXSG_USBDevice\n  "
                                                "KRXSG_TapeDrive\n"))
      << outcome.out;
  EXPECT_NE(std::string::npos,
            outcome.out.find("libipmiinventory.pi.so\n  KRXSG_ManagementController\n  "
                             "KRXSG_IPMIFRU\nSMBIOSInventory 1.0 (interface 1.0), loaded from "))
      << outcome.out;
  EXPECT_NE(std::string::npos,
            outcome.out.find("libsmbiosinventory.pi.so\n  KRXSG_SystemFirmware\n  "
                             "KRXSG_ComputerSystem\n  KRXSG_PhysicalMemory\n"
                             "SPFirmwareVPD 1.0 (interface 1.0), loaded from "))
      << outcome.out;
}

// An installation that has, beside a collector, one that no class is provided by and a file that is
// no plug-in.
TEST_F(Velhost, CollectorsAreListedWithTheirState) {
  const WideScreen wide;  // paths have room in a line
  const fs::path build = fs::path(VELHOST).parent_path().parent_path();
  const fs::path bin = folder_ / "bin";
  const fs::path lib = folder_ / "lib";
  fs::create_directories(bin);
  fs::create_directories(lib);
  fs::copy_file(VELHOST, bin / "velhost");
  fs::create_directory_symlink(build / "share", folder_ / "share");
  for (const char* const name :
       {"libvelcore.so", "libplugin.nsp.so", "libspdriver.so", "libsmbios.so",
        "libspfirmwarevpd.pi.so", "libdeviceinventory.pi.so"}) {
    fs::create_symlink(build / "lib" / name, lib / name);
  }
  fs::create_symlink(TEST_PLUGIN, lib / "libtestplugin.pi.so");
  put("lib/libbroken.pi.so", "no plug-in");

  const ProgramOutcome outcome = runProgram(bin / "velhost", {{"collectors"}, ""});
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("DeviceInventory 1.0 (interface 1.0), loaded from " +
                (lib / "libdeviceinventory.pi.so").string() +
                "\n  KRXSG_USBDevice\n  KRXSG_TapeDrive\n",
            outcome.out.substr(0, outcome.out.find("SPFirmwareVPD")));
  EXPECT_EQ("TestPlugin 0.9 (interface 1.0), loaded from " +
                (lib / "libtestplugin.pi.so").string() +
                "\n  no class of the schema names it as its Provider\nnot loaded: " +
                (lib / "libbroken.pi.so").string() + "\n",
            outcome.out.substr(std::min(outcome.out.find("TestPlugin"), outcome.out.size())));
  EXPECT_TRUE(outcome.err.starts_with("velhost: " + (lib / "libbroken.pi.so").string() + ": "))
      << outcome.err;
}

// The machine as it is given: a machine file, its dump, either by standard input.
TEST_F(Velhost, TheMachineMayBeADumpOrStandardInput) {
  const std::string dump = fs::path(MACHINES) / "qemu-q35.dmi";
  const std::string file = put("m.json", R"({ "format": "vel-machine/1", "name": "m",
                                              "smbios": { "dump": ")" +
                                             dump + R"(" } })");
  const auto query = [](const std::string& machine, const std::string& standardInput) {
    return runProgram(VELHOST, {.arguments = {"query", "--format", "json", "--machine", machine},
                                .standardOutput = "",
                                .standardInput = standardInput});
  };
  const ProgramOutcome expected = query(file, "");
  EXPECT_EQ(0, expected.status) << expected.err;
  EXPECT_NE(std::string::npos, expected.out.find("SystemBIOSElement\": [\n"));
  for (const auto& [machine, standardInput] :
       {std::pair(dump, std::string()), {"-", dump}, {"-", file}}) {
    const ProgramOutcome outcome = query(machine, standardInput);
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ(expected.out, outcome.out) << machine << " " << standardInput;
  }
  expectBadInput(query("-", put("bad.json", "{")), "standard input:1:2: ", "no JSON");
  const ProgramOutcome checked = runProgram(
      VELHOST, {.arguments = {"check", "-", dump}, .standardOutput = "", .standardInput = file});
  EXPECT_EQ("standard input: ok\n" + dump + ": ok\n", checked.out);
}

TEST_F(Velhost, AClassThatIsNotThereIsNamedWithWhatWasMeant) {
  const std::string file = bareMachine();
  const std::pair<std::string, std::string> cases[] = {
      {"elephants", "; velhost classes lists them"},
      {"krxsg_vpd", "; did you mean KRXSG_Vpd?"},
      {file, "; a machine is asked with --machine " + file},
      {folder_.string(), "; velhost classes lists them"},
  };
  for (const auto& [name, hint] : cases) {
    EXPECT_EQ("velhost: \"" + name + "\" is no class" + hint + "\n", run({"query", name}).err);
  }
}

TEST_F(Velhost, AListedCollectorsClassesAreShown) {
  const ProgramOutcome outcome =
      run({"query", "--format", "json", "--machine",
           put("m.json", R"({ "format": "vel-machine/1", "name": "m", "smbios": {},
                  "collectors": ["DeviceInventory"],
                  "instances": { "KRXSG_USBDevice": [ { "DeviceID": "U" } ],
                                 "KRXSG_TapeDrive": [] } })")});
  EXPECT_EQ(0, outcome.status) << outcome.err;
  EXPECT_NE(std::string::npos, outcome.out.find(R"("KRXSG_USBDevice": [)")) << outcome.out;
  EXPECT_EQ(std::string::npos, outcome.out.find("KRXSG_TapeDrive")) << outcome.out;
}

}  // namespace
}  // namespace velhost
