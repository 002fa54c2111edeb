// SPDX-License-Identifier: Apache-2.0
//
// How the program's answer is shown: on a terminal, or as a text that goes elsewhere.
#pragma once

#include "host/files/filecalls.h"
#include "host/text/screen.h"

namespace velhost {

// What the user says of the screen; null: nothing.
struct ScreenWishes {
  const char* columns = nullptr;
  const char* term = nullptr;
  const char* noColor = nullptr;
};

// From the environment: COLUMNS, TERM and NO_COLOR (no-color.org).
ScreenWishes screenWishes();

// Of standard output: as wide as COLUMNS says, where that is a positive number, else as the terminal
// is, else 80 columns. Coloured on a terminal that is not dumb, unless NO_COLOR says something.
Screen standardOutputScreen(const ScreenWishes& wishes = screenWishes(),
                            FileCalls& calls = kernelFiles());

// Of a file that the answer is written to: as wide as COLUMNS says, else 80 columns; not coloured.
Screen fileScreen(const ScreenWishes& wishes = screenWishes());

}  // namespace velhost
