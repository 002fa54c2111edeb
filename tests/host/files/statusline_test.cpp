// SPDX-License-Identifier: Apache-2.0
#include "host/files/statusline.h"

#include <gtest/gtest.h>

#include "tests/host/scriptedterminal.h"

namespace velhost {
namespace {

TEST(StatusLine, IsShownInPlaceOfTheLastOne) {
  ScreenText screen;
  {
    StatusLine line(std::make_unique<ScriptedTerminal>(screen));
    line.show("one");
    line.show("two");
    line.show("two");
    EXPECT_EQ("\rone\x1b[K\rtwo\x1b[K", screen.take());
  }
  EXPECT_EQ("\r\x1b[K", screen.take()) << "nothing is left behind";
}

TEST(StatusLine, IsRubbedOutOnce) {
  ScreenText screen;
  StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  line.hide();
  line.show("");
  EXPECT_EQ("", screen.take());
  line.show("one");
  line.hide();
  line.hide();
  EXPECT_EQ("\rone\x1b[K\r\x1b[K", screen.take());
  line.show("one");
  EXPECT_EQ("\rone\x1b[K", screen.take());
}

TEST(StatusLine, GoesBeforeAnythingElseIsWritten) {
  ScreenText screen;
  StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  line.show("one");
  screen.take();
  {
    const StatusLineHidden hidden;
    EXPECT_EQ("\r\x1b[K", screen.take());
  }
  line.show("one");
  EXPECT_EQ("\rone\x1b[K", screen.take());
}

TEST(StatusLine, WithoutOneThereIsNothingToHide) { const StatusLineHidden hidden; }

TEST(StatusLine, TheBackgroundIsQuiet) {
  ScreenText screen;
  StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  screen.isInForeground = false;
  line.show("one");
  EXPECT_EQ("", screen.take());
  screen.isInForeground = true;
  line.show("one");
  EXPECT_EQ("\rone\x1b[K", screen.take());
  screen.isInForeground = false;
  line.show("two");
  EXPECT_EQ("", screen.take()) << "the shell's line is not rubbed out";
}

TEST(StatusLine, TheLastColumnStaysFree) {
  ScreenText screen;
  StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  EXPECT_EQ(79U, line.room());
  screen.columns = 0;
  EXPECT_EQ(0U, line.room());
}

}  // namespace
}  // namespace velhost
