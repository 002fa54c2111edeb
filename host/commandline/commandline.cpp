// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

#include "host/text/nearestname.h"

namespace velhost {
namespace {

constexpr char kVersion[] = "velhost " VELHOST_VERSION;

constexpr char kDescription[] =
    "Loads collector plug-ins, queries them and shows the CIM instances that they\npublish.";

constexpr char kExamplesAndStatuses[] =
    "Examples:\n"
    "  velhost query\n"
    "      what the collectors find on this machine (as root: SMBIOS needs it)\n"
    "  velhost query KRXSG_SystemBIOSElement --machine server.json --format json\n"
    "      the BIOS element of a machine that a file describes, for jq\n"
    "  velhost record --redact --output recorded.json\n"
    "      this machine as a file to be queried elsewhere, serial numbers replaced\n"
    "  velhost summary *.json\n"
    "      which machines have another firmware than most\n"
    "  velhost help query\n"
    "      more about a command\n"
    "\n"
    "Exit status:\n"
    "  0  answered\n"
    "  1  the plug-in or the framework refused or failed; diff: different\n"
    "  2  bad usage or bad input; nothing was printed, but by check, summary and\n"
    "     report what other files gave\n"
    "  3  something did not answer or could not be read; the rest was printed\n";

constexpr char kQueryNotes[] =
    "Formats:\n"
    "  table        for people\n"
    "  json         for jq: one key a class, plain values\n"
    "  inventory    for programs: machine, collectors, each class with its state\n"
    "  ndjson       for logs and databases: a line an instance\n"
    "  csv          for spreadsheets: a line a property\n"
    "  openmetrics  for Prometheus: levels, counts, states\n"
    "  trace        everything: typed values, errors, both logs, the traffic\n"
    "The table is as wide as the terminal, or as COLUMNS says. The trace has all\n"
    "nodes.\n"
    "With --repeat the answer to the last request is shown; trace shows all of them\n"
    "and keeps them in memory until then.\n"
    "\n"
    "Examples:\n"
    "  velhost query --why\n"
    "      what the collectors find on this machine, and each step that failed\n"
    "  velhost query KRXSG_Vpd --machine server.json\n"
    "      the components of a machine that a file describes\n"
    "  velhost query --machine server.dmi --format csv --output server.csv\n"
    "      what a DMI dump (dmidecode --dump-bin) tells, for a spreadsheet\n";

constexpr char kClassesNotes[] =
    "Formats:\n"
    "  table  for people\n"
    "  json   names, descriptions, properties with their types\n"
    "  mof    everything, in DMTF's Managed Object Format, with superclasses and\n"
    "         qualifiers\n"
    "\n"
    "Examples:\n"
    "  velhost classes\n"
    "      the classes, each with a line about it\n"
    "  velhost classes KRXSG_Vpd --format mof\n"
    "      a class with where each of its values comes from\n";

constexpr char kCheckNotes[] =
    "Prints a line a file: \"FILE: ok\", or on standard error what is wrong where.\n"
    "\n"
    "Examples:\n"
    "  velhost check server.json\n"
    "      is this a machine file?\n"
    "  velhost check *.json\n"
    "      are all of these? Status 2 when one is not\n";

constexpr char kDiffNotes[] =
    "OLD and NEW may be inventories, traces or plain JSON that velhost query wrote,\n"
    "or machine files and DMI dumps, which are asked as a query does; - is standard\n"
    "input. What did not answer in one of them is told, and is not gone.\n"
    "\n"
    "Exit status:\n"
    "  0  the same\n"
    "  1  different\n"
    "  2  bad usage or bad input\n"
    "\n"
    "Examples:\n"
    "  velhost diff server.json server.dmi\n"
    "      what is different between two machines\n"
    "  velhost query --format inventory | velhost diff monday.json -\n"
    "      what has changed on this machine since an inventory was kept\n";

constexpr char kSummaryNotes[] =
    "FILE may be what velhost query wrote (inventory, json, trace), a machine file or\n"
    "a DMI dump, which is asked as a query does; - is standard input. One that cannot\n"
    "be read is told, and the others are summed up.\n"
    "\n"
    "Formats:\n"
    "  table  for people\n"
    "  json   for programs: each level with its counts and the first machines\n"
    "  csv    for spreadsheets: a line a level\n"
    "\n"
    "Exit status:\n"
    "  0  all files were read\n"
    "  2  bad usage, or a file could not be read\n"
    "\n"
    "Examples:\n"
    "  velhost summary server.json server.dmi\n"
    "      which levels there are, and which machines have another than most\n"
    "  velhost summary *.json --format csv\n"
    "      the same of all of these, for a spreadsheet\n";

constexpr char kCollectorsNotes[] =
    "Examples:\n"
    "  velhost collectors\n"
    "      which plug-ins there are, from where, and which classes they serve\n";

constexpr char kHelpNotes[] =
    "Examples:\n"
    "  velhost help query\n"
    "      the options and formats of a query\n"
    "  man velhost\n"
    "      the manual; man velhost-formats for files and documents\n";

constexpr char kExplainNotes[] =
    "To see the bytes of the machine that velhost runs on, record it first.\n"
    "\n"
    "Examples:\n"
    "  velhost explain KRXSG_SystemBIOSElement\n"
    "      what the class is, and where each of its properties comes from\n"
    "  velhost explain KRXSG_Vpd.PartNumber --machine server.json\n"
    "      the reply and the bytes in it that gave each part number\n";

constexpr char kRecordNotes[] =
    "System credentials among the OEM strings of SMBIOS are always left out.\n"
    "With --redact the serial numbers, asset tags and unique ids of SMBIOS, of the\n"
    "SPs, of FRUs and of other devices get pseudonyms wherever they stand, also in\n"
    "OEM strings and vendors' structures. The host's name, addresses and all else\n"
    "stay. docs/machine-file.md lists what is looked for.\n"
    "\n"
    "Examples:\n"
    "  velhost record --redact --output recorded.json\n"
    "      this machine, as a file to show to others once you have read it\n"
    "  velhost record --machine server.json --force --output copy.json\n"
    "      what a query asks of a machine that a file describes, and nothing else\n";

constexpr char kReportNotes[] =
    "FILE is what velhost writes or reads: an inventory, a result document (trace),\n"
    "the plain JSON of a query, a machine file or a DMI dump; - is standard input.\n"
    "The page needs nothing beside it, no network and no script. Of two files it\n"
    "tells what changed from the first to the second, of several which levels are\n"
    "odd.\n"
    "\n"
    "Examples:\n"
    "  velhost report server.json --output server.html\n"
    "      what a machine has, what is missing and why\n"
    "  velhost report server.dmi server.json --output changes.html\n"
    "      two machines, or one before and after, and what is different\n";

using FormatName = std::pair<std::string_view, Format>;
constexpr FormatName kQueryFormats[] = {
    {"table", Format::kTable},   {"json", Format::kJson}, {"inventory", Format::kInventory},
    {"ndjson", Format::kNdjson}, {"csv", Format::kCsv},   {"openmetrics", Format::kOpenMetrics},
    {"trace", Format::kTrace}};
constexpr FormatName kClassesFormats[] = {
    {"table", Format::kTable}, {"json", Format::kJson}, {"mof", Format::kMof}};

constexpr FormatName kDiffFormats[] = {{"table", Format::kTable}, {"json", Format::kJson}};
constexpr FormatName kSummaryFormats[] = {
    {"table", Format::kTable}, {"json", Format::kJson}, {"csv", Format::kCsv}};

// The library's own conversion takes octal and hexadecimal numbers as well.
template <class Number, class Target>
void readNumber(const std::string& name, const std::string& text, Number lowest, Target& value) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number < lowest) {
    throw CLI::ValidationError(name, "\"" + text + "\" is no whole number from " +
                                         std::to_string(lowest) + " to " +
                                         std::to_string(std::numeric_limits<Number>::max()));
  }
  value = number;
}

template <class Number, class Target>
CLI::Option* addNumberFor(CLI::App& app, const std::string& name, Target& value, Number lowest,
                          const std::string& description) {
  return app
      .add_option_function<std::string>(
          name,
          [name, &value, lowest](const std::string& text) {
            readNumber(name, text, lowest, value);
          },
          description)
      ->type_name("N");
}

template <class Number>
void addNumber(CLI::App& app, const std::string& name, Number& value, Number lowest,
               const std::string& description) {
  addNumberFor(app, name, value, lowest, description)->default_str(std::to_string(value));
}

// What is not a number (from_chars reads "nan") is within no bounds.
bool isTimeLimit(double seconds) { return seconds >= 0.001 && seconds <= 1000000; }

// nullopt: no number of seconds. One that is less than a millisecond is none.
std::optional<std::chrono::milliseconds> readSeconds(std::string_view text) {
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  if (error != std::errc() || rest != end || !isTimeLimit(seconds)) return std::nullopt;
  return std::chrono::milliseconds(std::llround(seconds * 1000));
}

void addSeconds(CLI::App& app, const std::string& name,
                std::optional<std::chrono::milliseconds>& time, const std::string& description) {
  app.add_option_function<std::string>(
         name,
         [name, &time](const std::string& text) {
           time = readSeconds(text);
           if (time) return;
           throw CLI::ValidationError(
               name, "\"" + text + "\" is no number of seconds from 0.001 to 1000000");
         },
         description)
      ->type_name("SECONDS");
}

void addFormat(CLI::App& app, Format& format, std::span<const FormatName> names) {
  std::string list;
  for (const auto& [name, value] : names) list += (list.empty() ? "" : ", ") + std::string(name);
  app.add_option_function<std::string>(
         "--format",
         [&format, names, list](const std::string& text) {
           const auto found = std::find_if(names.begin(), names.end(), [&](const FormatName& name) {
             return name.first == text;
           });
           if (found == names.end()) {
             throw CLI::ValidationError("--format", "\"" + text + "\" is none of " + list);
           }
           format = found->second;
         },
         "How the answer is printed, see below")
      ->type_name("FORMAT")
      ->default_str("table");
}

template <class Value>
CLI::Option* addPath(CLI::App& app, const std::string& name, std::optional<Value>& path,
                     const std::string& description) {
  return app
      .add_option_function<std::string>(
          name, [&path](const std::string& text) { path = text; }, description)
      ->type_name("FILE");
}

// One that has to be there, in its place.
void addFile(CLI::App& app, const std::string& name, std::filesystem::path& file,
             const std::string& description) {
  app.add_option_function<std::string>(
         name, [&file](const std::string& text) { file = text; }, description)
      ->type_name("")
      ->required();
}

void addPlugins(CLI::App& app, std::vector<std::filesystem::path>& plugins) {
  app.add_option_function<std::vector<std::string>>(
         "--plugin",
         [&plugins](const std::vector<std::string>& files) {
           plugins.assign(files.begin(), files.end());
         },
         "This plug-in and no others, may be repeated;\ndefault: those beside velhost")
      ->type_name("FILE")
      ->allow_extra_args(false);
}

// What of the answer is shown.
void addShown(CLI::App& command, QueryCommand& query) {
  addNumberFor(command, "--node", query.node, std::uint64_t{1},
               "Show the instances of node N alone; those of no\nparticular node are left out, the "
               "classes that\nended without instances stay");
  command.add_flag("--wide", query.wide,
                   "Show all properties in the table; so does naming\nclasses");
  command.add_flag("--bytes", query.bytes,
                   "Give each command of the trace the bytes of its\nreply; with --format trace");
}

void addQuery(CLI::App& command, QueryCommand& query) {
  command.add_option("CLASS", query.classes, "Classes to ask for; none: all that it serves")
      ->type_name("");
  addPath(command, "--machine", query.machine,
          "Ask the machine that this file describes: a\nmachine file or a DMI dump; - is standard "
          "input");
  addPlugins(command, query.plugins);
  addFormat(command, query.format, kQueryFormats);
  addPath(command, "--output", query.output, "Write the answer to this file");
  addShown(command, query);
  addNumber(command, "--repeat", query.repeat, 1U, "Make N requests");
  addSeconds(command, "--timeout", query.timeout,
             "Ask SPs and BMCs nothing more when the request\ntook so long; default: 300 on this "
             "machine, no\nlimit for one that a file describes");
  command.add_flag("--why", query.why, "Tell each step that failed, behind the answer");
  command.add_flag("--reinit", query.reinit, "Init again before each request but the first");
  addNumber(command, "--log-level", query.logLevel, std::numeric_limits<int>::min(),
            "Show core-log entries with a severity up to N on\nstandard error; without this json "
            "and trace show\n"
            "them up to 1, the other formats none");
}

void addClasses(CLI::App& command, ClassesCommand& classes) {
  command.add_option("CLASS", classes.classes, "Classes to show; none: all")->type_name("");
  addFormat(command, classes.format, kClassesFormats);
}

void addExplain(CLI::App& command, ExplainCommand& explain) {
  command.add_option("CLASS[.PROPERTY]", explain.topic, "The class, or one property of it")
      ->type_name("")
      ->required();
  addPath(
      command, "--machine", explain.machine,
      "Show the very bytes that this machine gave: a\nmachine file or a DMI dump; - is standard "
      "input");
  command
      .add_option_function<std::string>(
          "--node",
          [&explain](const std::string& text) {
            unsigned node = 0;
            readNumber("--node", text, 0U, node);
            explain.node = node;
          },
          "Only the instances of this node")
      ->type_name("N");
}

void addRecord(CLI::App& command, RecordCommand& record) {
  addPath(command, "--machine", record.machine, "Record the machine that this file describes");
  addPlugins(command, record.plugins);
  addPath(command, "--output", record.output, "Write the machine file here, for you alone");
  command.add_flag("--force", record.force, "Replace the output file if it is there");
  command.add_flag("--redact", record.redact,
                   "Put pseudonyms for serial numbers, asset tags\nand unique ids");
}

void addDiff(CLI::App& command, DiffCommand& diff) {
  addFile(command, "OLD", diff.before, "What was before");
  addFile(command, "NEW", diff.after, "What is now");
  addFormat(command, diff.format, kDiffFormats);
}

// Any number, but none at all.
void addFiles(CLI::App& command, std::vector<std::filesystem::path>& files,
              const std::string& description) {
  command
      .add_option_function<std::vector<std::string>>(
          "FILE",
          [&files](const std::vector<std::string>& named) {
            files.assign(named.begin(), named.end());
          },
          description)
      ->type_name("")
      ->required();
}

void addSummary(CLI::App& command, SummaryCommand& summary) {
  addFiles(command, summary.files, "Results and machine files, any number");
  addFormat(command, summary.format, kSummaryFormats);
}

void addReport(CLI::App& command, ReportCommand& report) {
  addFiles(command, report.files, "Results or machines, see below");
  addPath(command, "--output", report.output, "Write the page here")->type_name("PAGE")->required();
}

void addHelp(CLI::App& command, std::string& topic) {
  command.add_option("COMMAND", topic, "The command; none: all of them in short")->type_name("");
}

std::vector<std::string> namesOfOptions(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::vector<std::string> namesOfCommands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

constexpr char kSeeHelp[] = "; see velhost --help";

// `what` is wrong with a word; one of the names may have been meant.
[[noreturn]] void refuse(const std::string& what, const std::string& word,
                         const std::vector<std::string>& names) {
  const std::string meant =
      suggestion(word, std::vector<std::string_view>(names.begin(), names.end()));
  throw InputError(what + (meant.empty() ? kSeeHelp : meant));
}

std::string helpText(const CLI::App& app, const std::string& topic) {
  const auto commands = app.get_subcommands({});
  const auto found = std::ranges::find(commands, topic, &CLI::App::get_name);
  if (found != commands.end()) return (*found)->help("velhost");
  if (!topic.empty()) refuse("there is no command " + topic, topic, namesOfCommands(app));
  return app.get_formatter()->make_help(&app, "velhost", CLI::AppFormatMode::All);
}

// One, or none. The library's own list lacks those that stand behind "--".
std::vector<const CLI::App*> parsedCommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return command->parsed(); });
}

// The first word that nothing takes: before the command, or behind it.
[[noreturn]] void refuseExtras(const CLI::App& app) {
  const bool isBefore = !app.remaining().empty();
  const CLI::App& where = isBefore ? app : *parsedCommands(app).front();
  std::string word = where.remaining().front();
  if (word.starts_with('-')) {
    word.resize(std::min(word.size(), word.find('=')));
    refuse(word + " is no option here", word, namesOfOptions(where));
  }
  if (isBefore) refuse(word + " is no command", word, namesOfCommands(app));
  refuse(word + " is not expected here", word, {});
}

// What is printed in place of a command: help or the version. Throws InputError for bad usage.
std::optional<PrintCommand> parse(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::CallForHelp&) {
    return PrintCommand{app.help("", CLI::AppFormatMode::All)};
  } catch (const CLI::CallForVersion&) {
    return PrintCommand{std::string(kVersion) + "\n"};
  } catch (const CLI::ExtrasError&) {
    refuseExtras(app);
  } catch (const CLI::ParseError& error) {
    throw InputError(error.what() + std::string(kSeeHelp));
  }
}

// What the words behind the commands are read into.
struct Words {
  QueryCommand query;
  ExplainCommand explain;
  DiffCommand diff;
  SummaryCommand summary;
  ReportCommand report;
  RecordCommand record;
  CheckCommand check;
  ClassesCommand classes;
  std::string topic;  // of help
};

Command readQuery(const CLI::App& command, const Words& words) {
  QueryCommand query = words.query;
  query.hasLogLevel = command.count("--log-level") > 0;
  if (query.bytes && query.format != Format::kTrace) {
    throw InputError("--bytes goes with --format trace; no other format has replies");
  }
  return query;
}

struct CommandEntry {
  std::string_view name;
  const char* description;
  const char* notes;                                     // below its options
  void (*add)(CLI::App& command, Words& words);          // its options
  Command (*read)(const CLI::App&, const Words& words);  // what the command and its words ask for
};

// In the order of the help.
constexpr CommandEntry kCommands[] = {
    {"query", "Query the plug-in", kQueryNotes,
     [](CLI::App& command, Words& words) { addQuery(command, words.query); }, readQuery},
    {"explain", "Tell what a class or property means and where it comes from", kExplainNotes,
     [](CLI::App& command, Words& words) { addExplain(command, words.explain); },
     [](const CLI::App&, const Words& words) -> Command { return words.explain; }},
    {"diff", "Show what is different between two machines", kDiffNotes,
     [](CLI::App& command, Words& words) { addDiff(command, words.diff); },
     [](const CLI::App&, const Words& words) -> Command { return words.diff; }},
    {"summary", "Show which levels many machines have, and the odd ones", kSummaryNotes,
     [](CLI::App& command, Words& words) { addSummary(command, words.summary); },
     [](const CLI::App&, const Words& words) -> Command { return words.summary; }},
    {"report", "Write a page about machines, to be read in a browser", kReportNotes,
     [](CLI::App& command, Words& words) { addReport(command, words.report); },
     [](const CLI::App&, const Words& words) -> Command { return words.report; }},
    {"record", "Query the plug-in and write a machine file that answers alike", kRecordNotes,
     [](CLI::App& command, Words& words) { addRecord(command, words.record); },
     [](const CLI::App&, const Words& words) -> Command { return words.record; }},
    {"check", "Check machine files", kCheckNotes,
     [](CLI::App& command, Words& words) { addFiles(command, words.check.files, "Machine files"); },
     [](const CLI::App&, const Words& words) -> Command { return words.check; }},
    {"collectors", "Show the collectors beside velhost and what they serve", kCollectorsNotes,
     [](CLI::App&, Words&) {},
     [](const CLI::App&, const Words&) -> Command { return CollectorsCommand{}; }},
    {"classes", "Show the classes of the schema", kClassesNotes,
     [](CLI::App& command, Words& words) { addClasses(command, words.classes); },
     [](const CLI::App&, const Words& words) -> Command { return words.classes; }},
    {"help", "Show the help of a command", kHelpNotes,
     [](CLI::App& command, Words& words) { addHelp(command, words.topic); },
     [](const CLI::App& command, const Words& words) -> Command {
       return PrintCommand{helpText(*command.get_parent(), words.topic)};
     }},
};

const CommandEntry* named(std::string_view name) {
  return std::ranges::find(kCommands, name, &CommandEntry::name);
}

// Those that have to be known to understand the words: the one that is named first, as all others are
// its own; none for the version. Else all, as help shows them and a slip may have meant any.
std::span<const CommandEntry> neededCommands(int argc, const char* const* argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (argc == 2 && first == "--version") return {};
  const CommandEntry* const entry = named(first);
  if (entry == std::end(kCommands) || entry->name == "help") return kCommands;
  return {entry, 1};
}

std::string noCommandText() {
  std::string text = "a command is missing: ";
  for (const auto& command : std::span(kCommands).first(std::size(kCommands) - 1)) {  // not help
    const bool isLast = &command == std::end(kCommands) - 2;
    if (&command != kCommands) text += isLast ? " or " : ", ";
    text += command.name;
  }
  return text + "; see velhost --help";
}

}  // namespace

Command parseCommandLine(int argc, const char* const* argv) {
  Words words;
  CLI::App app(kDescription, "velhost");
  app.set_version_flag("--version", kVersion, "Print the version and exit");
  app.footer(kExamplesAndStatuses);
  app.require_subcommand(0, 1);  // one is needed, but an unknown word is to be named first
  for (const CommandEntry& entry : neededCommands(argc, argv)) {
    CLI::App* const command = app.add_subcommand(std::string(entry.name), entry.description);
    entry.add(*command, words);
    command->footer(entry.notes);
  }
  if (const auto text = parse(app, argc, argv)) return *text;
  const auto asked = parsedCommands(app);
  if (asked.empty()) throw InputError(noCommandText());
  return named(asked.front()->get_name())->read(*asked.front(), words);
}

}  // namespace velhost
