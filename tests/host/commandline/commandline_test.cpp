// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/commandline.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace velhost {
namespace {

Command parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "velhost");
  return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLine, AQueryByItselfTakesTheDefaults) {
  const auto query = std::get<QueryCommand>(parse({"query"}));
  EXPECT_TRUE(query.classes.empty());
  EXPECT_FALSE(query.machine || query.output);
  EXPECT_TRUE(query.plugins.empty());
  EXPECT_EQ(Format::kTable, query.format);
  EXPECT_EQ(1U, query.repeat);
  EXPECT_FALSE(query.reinit);
  EXPECT_FALSE(query.why);
  EXPECT_FALSE(query.hasLogLevel);
  EXPECT_EQ(1, query.logLevel);
}

TEST(CommandLine, AQueryTakesClassesAndOptionsInAnyOrder) {
  const auto query = std::get<QueryCommand>(
      parse({"query", "B", "--machine", "m.json", "--format", "trace", "--repeat", "3", "--reinit",
             "A", "--log-level=-2", "--plugin", "p.pi.so", "--output", "out", "--plugin", "q.pi.so",
             "B", "--why"}));
  EXPECT_EQ((std::vector<std::string>{"B", "A", "B"}), query.classes);
  EXPECT_EQ("m.json", query.machine);
  EXPECT_EQ((std::vector<std::filesystem::path>{"p.pi.so", "q.pi.so"}), query.plugins);
  EXPECT_EQ("out", query.output);
  EXPECT_EQ(Format::kTrace, query.format);
  EXPECT_EQ(3U, query.repeat);
  EXPECT_TRUE(query.reinit);
  EXPECT_TRUE(query.why);
  EXPECT_TRUE(query.hasLogLevel);
  EXPECT_EQ(-2, query.logLevel);
}

TEST(CommandLine, ACommandMayStandBehindTheEndOfOptions) {
  EXPECT_EQ(std::vector<std::string>{"A"},
            std::get<QueryCommand>(parse({"--", "query", "A"})).classes);
}

// Behind a command the names of others are words of its own.
TEST(CommandLine, AClassMayHaveACommandsName) {
  EXPECT_EQ((std::vector<std::string>{"help", "query"}),
            std::get<QueryCommand>(parse({"query", "help", "query"})).classes);
}

TEST(CommandLine, ALogLevelMayBeNegative) {
  EXPECT_EQ(-1, std::get<QueryCommand>(parse({"query", "--log-level", "-1"})).logLevel);
}

TEST(CommandLine, ATimeLimitIsInSeconds) {
  EXPECT_FALSE(std::get<QueryCommand>(parse({"query"})).timeout);
  const std::pair<const char*, int> cases[] = {{"5", 5000},      {"1.5", 1500},
                                               {".25", 250},     {"0.001", 1},
                                               {"2.0006", 2001}, {"1000000", 1000000000}};
  for (const auto& [text, milliseconds] : cases) {
    EXPECT_EQ(std::chrono::milliseconds(milliseconds),
              std::get<QueryCommand>(parse({"query", "--timeout", text})).timeout)
        << text;
  }
}

TEST(CommandLine, BytesGoWithTheTrace) {
  EXPECT_FALSE(std::get<QueryCommand>(parse({"query", "--format", "trace"})).bytes);
  EXPECT_TRUE(std::get<QueryCommand>(parse({"query", "--bytes", "--format", "trace"})).bytes);
}

TEST(CommandLine, NumbersAreDecimal) {
  EXPECT_EQ(10U, std::get<QueryCommand>(parse({"query", "--repeat", "010"})).repeat);
}

TEST(CommandLine, AQueryTakesEachFormat) {
  const struct {
    const char* name;
    Format format;
  } cases[] = {
      {"table", Format::kTable},   {"json", Format::kJson}, {"inventory", Format::kInventory},
      {"ndjson", Format::kNdjson}, {"csv", Format::kCsv},   {"openmetrics", Format::kOpenMetrics},
      {"trace", Format::kTrace},
  };
  const std::string help = std::get<PrintCommand>(parse({"query", "--help"})).text;
  for (const auto& c : cases) {
    EXPECT_EQ(c.format, std::get<QueryCommand>(parse({"query", "--format", c.name})).format)
        << c.name;
    EXPECT_NE(std::string::npos, help.find("\n  " + std::string(c.name) + "  ")) << c.name;
  }
}

TEST(CommandLine, ClassesTakesTableJsonAndMof) {
  EXPECT_EQ(Format::kTable, std::get<ClassesCommand>(parse({"classes"})).format);
  const auto classes = std::get<ClassesCommand>(parse({"classes", "A", "--format", "json"}));
  EXPECT_EQ(std::vector<std::string>{"A"}, classes.classes);
  EXPECT_EQ(Format::kJson, classes.format);
  EXPECT_EQ(Format::kMof, std::get<ClassesCommand>(parse({"classes", "--format", "mof"})).format);
}

TEST(CommandLine, CheckTakesFiles) {
  EXPECT_EQ((std::vector<std::filesystem::path>{"a", "query"}),
            std::get<CheckCommand>(parse({"check", "a", "query"})).files);
}

TEST(CommandLine, ARecordingByItselfTakesTheDefaults) {
  const auto record = std::get<RecordCommand>(parse({"record"}));
  EXPECT_FALSE(record.machine || record.output);
  EXPECT_TRUE(record.plugins.empty());
  EXPECT_FALSE(record.force || record.redact);
}

TEST(CommandLine, ARecordingTakesItsOptions) {
  const auto record =
      std::get<RecordCommand>(parse({"record", "--machine", "m.json", "--plugin", "p.pi.so",
                                     "--output", "o.json", "--force", "--redact"}));
  EXPECT_EQ("m.json", record.machine);
  EXPECT_EQ(std::vector<std::filesystem::path>{"p.pi.so"}, record.plugins);
  EXPECT_EQ("o.json", record.output);
  EXPECT_TRUE(record.force && record.redact);
}

std::string expectedHelp(const std::string& name) {
  std::ifstream file(HELP_DIR "/" + name + ".txt");
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(CommandLine, HelpTellsAllOfACommand) {
  EXPECT_EQ(expectedHelp("velhost"), std::get<PrintCommand>(parse({"--help"})).text);
  for (const char* const command : {"query", "explain", "diff", "summary", "report", "record",
                                    "check", "collectors", "classes", "help"}) {
    EXPECT_EQ(expectedHelp(command), std::get<PrintCommand>(parse({command, "--help"})).text);
  }
}

TEST(CommandLine, VersionIsNameAndNumber) {
  EXPECT_EQ("velhost 1.0.0\n", std::get<PrintCommand>(parse({"--version"})).text);
}

std::string complaintAbout(const std::vector<const char*>& arguments) {
  try {
    parse(arguments);
  } catch (const InputError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(CommandLine, BadUsageIsOneLine) {
  const struct {
    std::vector<const char*> arguments;
    const char* complaint;
  } cases[] = {
      {{},
       "a command is missing: query, explain, diff, summary, report, record, check, collectors or "
       "classes; see velhost --help"},
      {{"query", "--machine"}, "--machine: 1 required FILE missing; see velhost --help"},
      {{"query", "--machine", "a", "--machine", "b"},
       "--machine: At Most 1 required but received 2; see velhost --help"},
      {{"query", "--format", "xml"},
       "--format: \"xml\" is none of table, json, inventory, ndjson, csv, openmetrics, trace; see "
       "velhost --help"},
      {{"query", "--format", "CSV"},
       "--format: \"CSV\" is none of table, json, inventory, ndjson, csv, openmetrics, trace; see "
       "velhost --help"},
      {{"query", "--format", ""},
       "--format: \"\" is none of table, json, inventory, ndjson, csv, openmetrics, trace; see "
       "velhost --help"},
      {{"query", "--format", "mof"},
       "--format: \"mof\" is none of table, json, inventory, ndjson, csv, openmetrics, trace; see "
       "velhost --help"},
      {{"query", "--repeat", "0"},
       "--repeat: \"0\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "-1"},
       "--repeat: \"-1\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "three"},
       "--repeat: \"three\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "3x"},
       "--repeat: \"3x\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "0x3"},
       "--repeat: \"0x3\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "1.5"},
       "--repeat: \"1.5\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", ""},
       "--repeat: \"\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--repeat", "4294967296"},
       "--repeat: \"4294967296\" is no whole number from 1 to 4294967295; see velhost --help"},
      {{"query", "--log-level", "all"},
       "--log-level: \"all\" is no whole number from -2147483648 to 2147483647; see velhost "
       "--help"},
      {{"query", "--node", "0"},
       "--node: \"0\" is no whole number from 1 to 18446744073709551615; see velhost --help"},
      {{"query", "--timeout", "0"},
       "--timeout: \"0\" is no number of seconds from 0.001 to 1000000; see velhost --help"},
      {{"query", "--timeout", "0.0009"},
       "--timeout: \"0.0009\" is no number of seconds from 0.001 to 1000000; see velhost --help"},
      {{"query", "--timeout", "1000000.1"},
       "--timeout: \"1000000.1\" is no number of seconds from 0.001 to 1000000; see velhost "
       "--help"},
      {{"query", "--timeout", "1e3"},
       "--timeout: \"1e3\" is no number of seconds from 0.001 to 1000000; see velhost --help"},
      {{"query", "--bytes"}, "--bytes goes with --format trace; no other format has replies"},
      {{"query", "--bytes", "--format", "json"},
       "--bytes goes with --format trace; no other format has replies"},
      {{"query", "--reinit=maybe"}, "Could not convert: --reinit = maybe; see velhost --help"},
      {{"explain"}, "CLASS[.PROPERTY] is required; see velhost --help"},
      {{"explain", "A", "--node", "-1"},
       "--node: \"-1\" is no whole number from 0 to 4294967295; see velhost --help"},
      {{"classes", "--format", "trace"},
       "--format: \"trace\" is none of table, json, mof; see velhost --help"},
      {{"classes", "--format", "inventory"},
       "--format: \"inventory\" is none of table, json, mof; see velhost --help"},
      {{"classes", "--machine", "m.json"}, "--machine is no option here; see velhost --help"},
      {{"diff", "a"}, "NEW is required; see velhost --help"},
      {{"diff", "a", "b", "--format", "csv"},
       "--format: \"csv\" is none of table, json; see velhost --help"},
      {{"summary"}, "FILE is required; see velhost --help"},
      {{"summary", "a", "--format", "mof"},
       "--format: \"mof\" is none of table, json, csv; see velhost --help"},
      {{"report", "a"}, "--output is required; see velhost --help"},
      {{"report", "--output", "a"}, "FILE is required; see velhost --help"},
      {{"check"}, "FILE is required; see velhost --help"},
      {{"check", "--format", "json"}, "--format is no option here; see velhost --help"},
      {{"record", "KRXSG_Vpd"}, "KRXSG_Vpd is not expected here; see velhost --help"},
      {{"record", "--output"}, "--output: 1 required FILE missing; see velhost --help"},
      {{"record", "--format", "json"}, "--format is no option here; did you mean --force?"},
      {{"record", "--force=maybe"}, "Could not convert: --force = maybe; see velhost --help"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.complaint, complaintAbout(c.arguments));
}

TEST(CommandLine, AWordThatIsNotTakenIsNamedWithWhatWasMeant) {
  const struct {
    std::vector<const char*> arguments;
    const char* complaint;
  } cases[] = {
      {{"fly"}, "fly is no command; see velhost --help"},
      {{"querry"}, "querry is no command; did you mean query?"},
      {{"--machine", "m", "query"}, "--machine is no option here; see velhost --help"},
      {{"--versoin"}, "--versoin is no option here; did you mean --version?"},
      {{"query", "--quark"}, "--quark is no option here; see velhost --help"},
      {{"query", "A", "--formt", "json"}, "--formt is no option here; did you mean --format?"},
      {{"query", "--MACHINE=m"}, "--MACHINE is no option here; did you mean --machine?"},
      {{"collectors", "query"}, "query is not expected here; see velhost --help"},
      {{"help", "fly"}, "there is no command fly; see velhost --help"},
      {{"help", "clases"}, "there is no command clases; did you mean classes?"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.complaint, complaintAbout(c.arguments));
}

TEST(CommandLine, HelpFitsEightyColumns) {
  for (const char* const command :
       {"--help", "query", "classes", "collectors", "record", "check", "help"}) {
    std::istringstream help(std::get<PrintCommand>(parse({command, "--help"})).text);
    for (std::string line; std::getline(help, line);) {
      EXPECT_GE(80U, line.size()) << command << ": " << line;
    }
  }
}

TEST(CommandLine, HelpIsACommandToo) {
  const auto text = [](const std::vector<const char*>& arguments) {
    return std::get<PrintCommand>(parse(arguments)).text;
  };
  EXPECT_EQ(text({"--help"}), text({"help"}));
  for (const char* const command : {"query", "classes", "collectors", "record", "check", "help"}) {
    EXPECT_EQ(text({command, "--help"}), text({"help", command})) << command;
  }
}

}  // namespace
}  // namespace velhost
