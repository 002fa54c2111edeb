// SPDX-License-Identifier: Apache-2.0
//
// Runs a program as a person would and keeps what came out.
#pragma once

#include <string>
#include <vector>

namespace velhost {

struct ProgramOutcome {
  int status = -1;  // exit status; -1 when a signal ended the program
  std::string out;
  std::string err;
};

struct ProgramRun {
  std::vector<std::string> arguments;  // behind the program's name
  std::string standardOutput;          // a file to write to instead of keeping what comes
  std::vector<int> closed = {};        // standard streams that the program is started without
  bool hasImpatientPipe = false;       // standard output is a pipe that is soon full, non-blocking
  std::string standardInput = {};      // a file to read from; empty: the test's own
};

ProgramOutcome runProgram(const std::string& program, const ProgramRun& run);

}  // namespace velhost
