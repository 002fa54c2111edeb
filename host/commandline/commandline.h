// SPDX-License-Identifier: Apache-2.0
//
// The command line, read into plain values.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/text/inputerror.h"

namespace velhost {

enum class Format { kTable, kJson, kInventory, kNdjson, kCsv, kOpenMetrics, kTrace, kMof };

struct QueryCommand {
  std::vector<std::string> classes;  // empty: all that the plug-in serves
  std::optional<std::filesystem::path> machine;
  std::vector<std::filesystem::path> plugins;  // none: those beside the program
  std::optional<std::filesystem::path> output;
  Format format = Format::kTable;
  unsigned repeat = 1;
  bool reinit = false;
  int logLevel = 1;
  bool hasLogLevel = false;  // it was given
  bool why = false;
  std::optional<std::chrono::milliseconds> timeout;
  bool wide = false;
  bool bytes = false;  // with the trace alone
  std::optional<std::uint64_t> node;
};

struct ClassesCommand {
  std::vector<std::string> classes;  // empty: the whole schema
  Format format = Format::kTable;
};

struct ExplainCommand {
  std::string topic;  // CLASS or CLASS.PROPERTY
  std::optional<std::filesystem::path> machine;
  std::optional<unsigned> node;
};

struct CheckCommand {
  std::vector<std::filesystem::path> files;
};

struct DiffCommand {
  std::filesystem::path before;
  std::filesystem::path after;
  Format format = Format::kTable;
};

struct SummaryCommand {
  std::vector<std::filesystem::path> files;
  Format format = Format::kTable;
};

struct CollectorsCommand {};

struct RecordCommand {
  std::optional<std::filesystem::path> machine;
  std::vector<std::filesystem::path> plugins;  // none: those beside the program
  std::optional<std::filesystem::path> output;
  bool force = false;
  bool redact = false;
};

struct ReportCommand {
  std::vector<std::filesystem::path> files;
  std::optional<std::filesystem::path> output;  // always given
};

// --help and --version.
struct PrintCommand {
  std::string text;
};

using Command =
    std::variant<QueryCommand, ClassesCommand, CollectorsCommand, ExplainCommand, RecordCommand,
                 CheckCommand, DiffCommand, SummaryCommand, ReportCommand, PrintCommand>;

// Throws InputError, one line, for bad usage.
Command parseCommandLine(int argc, const char* const* argv);

}  // namespace velhost
