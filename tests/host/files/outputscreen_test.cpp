// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputscreen.h"

#include <gtest/gtest.h>

#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

struct ScreenCase {
  const char* what;
  ScreenWishes wishes;
  int terminal;  // its columns; -1: none
  std::size_t width;
  bool hasColour;
};

TEST(OutputScreen, IsTheTerminalOrWhatTheUserSays) {
  const ScreenCase cases[] = {
      {"a pipe", {}, -1, 80, false},
      {"a terminal", {nullptr, "xterm", nullptr}, 132, 132, true},
      {"a terminal of which nothing is said", {}, 132, 132, true},
      {"a terminal that tells no columns", {}, 0, 80, true},
      {"a dumb terminal", {nullptr, "dumb", nullptr}, 132, 132, false},
      {"no colour is wanted", {nullptr, "xterm", "1"}, 132, 132, false},
      {"NO_COLOR is empty", {nullptr, "xterm", ""}, 132, 132, true},
      {"COLUMNS go before the terminal", {"40", "xterm", nullptr}, 132, 40, true},
      {"COLUMNS of a pipe", {"40", "xterm", nullptr}, -1, 40, false},
      {"COLUMNS of 0", {"0", nullptr, nullptr}, 132, 132, true},
      {"empty COLUMNS", {"", nullptr, nullptr}, 132, 132, true},
      {"negative COLUMNS", {"-40", nullptr, nullptr}, -1, 80, false},
      {"COLUMNS in words", {"40 columns", nullptr, nullptr}, -1, 80, false},
      {"COLUMNS beyond all numbers", {"99999999999999999999", nullptr, nullptr}, -1, 80, false},
      {"a single column", {"1", nullptr, nullptr}, -1, 1, false},
  };
  for (const ScreenCase& c : cases) {
    ScriptedFiles files;
    files.results["isatty"] = {c.terminal < 0 ? -ENOTTY : 1};
    files.columns = c.terminal;
    const Screen screen = standardOutputScreen(c.wishes, files);
    EXPECT_EQ(c.width, screen.width) << c.what;
    EXPECT_EQ(c.hasColour, screen.hasColour) << c.what;
  }
}

TEST(OutputScreen, AFileIsNoTerminal) {
  const Screen plain = fileScreen({nullptr, "xterm", nullptr});
  EXPECT_EQ(80U, plain.width);
  EXPECT_FALSE(plain.hasColour);
  EXPECT_EQ(132U, fileScreen({"132", "xterm", nullptr}).width);
}

}  // namespace
}  // namespace velhost
