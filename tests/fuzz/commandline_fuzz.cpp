// SPDX-License-Identifier: Apache-2.0
//
// Arguments, each up to the next zero byte. They are a command with all that it needs, or bad usage in one
// line.
#include <algorithm>
#include <type_traits>
#include <vector>

#include "host/commandline/commandline.h"
#include "tests/fuzz/bytesource.h"
#include "tests/fuzz/require.h"

namespace {

using namespace velhost;
using fuzz::require;

bool isOneOf(Format format, std::initializer_list<Format> formats) {
  return std::ranges::find(formats, format) != formats.end();
}

void check(const QueryCommand& command) {
  require(command.repeat >= 1, "there is a request");
  require(command.format != Format::kMof, "mof is a format of schemas");
  require(!command.timeout || command.timeout->count() >= 0, "a time limit is a time");
}
void check(const ClassesCommand& command) {
  require(isOneOf(command.format, {Format::kTable, Format::kJson, Format::kMof}),
          "schemas have formats of their own");
}
void check(const ExplainCommand& /*command*/) {}
void check(const CheckCommand& command) { require(!command.files.empty(), "there is a file"); }
void check(const DiffCommand& command) {
  require(isOneOf(command.format, {Format::kTable, Format::kJson}), "a diff has two formats");
}
void check(const SummaryCommand& command) {
  require(!command.files.empty(), "there is a file");
  require(isOneOf(command.format, {Format::kTable, Format::kJson, Format::kCsv}),
          "a summary has three formats");
}
void check(const CollectorsCommand& /*command*/) {}
void check(const RecordCommand& /*command*/) {}
void check(const ReportCommand& command) {
  require(!command.files.empty() && command.output, "a report has files and a page");
}
void check(const PrintCommand& command) { require(command.text.ends_with('\n'), "help is lines"); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::ByteSource bytes(data, size);
  std::vector<std::string> arguments;
  while (!bytes.isEmpty()) arguments.push_back(bytes.text());
  std::vector<const char*> pointers{"velhost"};
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  try {
    const Command command = parseCommandLine(static_cast<int>(pointers.size()), pointers.data());
    std::visit([](const auto& given) { check(given); }, command);
  } catch (const InputError& error) {
    require(*error.what() != 0, "bad usage has a reason");
  }
  return 0;
}
