// SPDX-License-Identifier: Apache-2.0
//
// What the program does, one function a command, in a file of its name. Each prints its answer and returns the exit
// status; bad input comes out as InputError or PluginLoadError before anything is printed.
#pragma once

#include "host/commandline/commandline.h"

namespace velhost {

enum ExitStatus : int {
  kAnswered = 0,
  kRefused = 1,     // the plug-in or the framework refused or failed
  kBadInput = 2,    // bad usage or bad input
  kUnreadable = 3,  // something that should have answered did not, or could not be read
};

int run(const QueryCommand& command);
int run(const ClassesCommand& command);
int run(const CollectorsCommand& command);
int run(const ExplainCommand& command);
int run(const RecordCommand& command);
int run(const CheckCommand& command);
int run(const DiffCommand& command);
int run(const SummaryCommand& command);
int run(const ReportCommand& command);
int run(const PrintCommand& command);

}  // namespace velhost
