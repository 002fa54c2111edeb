// SPDX-License-Identifier: Apache-2.0
#include "host/progress/progressline.h"

#include <gtest/gtest.h>

#include "tests/host/scriptedterminal.h"
#include "tests/support/scriptedclock.h"

namespace velhost {
namespace {

using NKRXVEL20::host::TrafficEntry;
using std::chrono::milliseconds;

class Line : public ::testing::Test {
 protected:
  static TrafficEntry command() {
    TrafficEntry entry;
    entry.command = bytesOfHex("04 03");
    return entry;
  }
  std::string redrawn() {
    progress_.redraw();
    return screen_.take();
  }

  ScreenText screen_;
  NKRXVEL20::host::ScriptedClock clock_;
  StatusLine line_{std::make_unique<ScriptedTerminal>(screen_)};
  ProgressLine progress_{line_, clock_, {}};
};

TEST_F(Line, NothingIsShownForASecond) {
  progress_.sends(command());
  clock_.sleep(milliseconds(999));
  EXPECT_EQ("", redrawn());
  clock_.sleep(milliseconds(1));
  EXPECT_EQ("\rSP\x1b[K", redrawn());
}

TEST_F(Line, ItIsDrawnAgainWhenItChanges) {
  clock_.sleep(kQuietTime);
  EXPECT_EQ("", redrawn());
  progress_.found(3);
  progress_.sends(command());
  EXPECT_EQ("\rSP 1 of 3\x1b[K", redrawn());
  EXPECT_EQ("", redrawn());
  progress_.got(command());
  EXPECT_EQ("\rSP 1 of 3: 1 command\x1b[K", redrawn());
  progress_.begin(true);
  EXPECT_EQ("\r\x1b[K", redrawn());
}

TEST_F(Line, ItGoesWhenTheDriverPrintsUntilTheNextCommand) {
  clock_.sleep(kQuietTime);
  progress_.sends(command());
  EXPECT_EQ("\rSP\x1b[K", redrawn());
  progress_.prints();
  EXPECT_EQ("\r\x1b[K", screen_.take());
  EXPECT_EQ("", redrawn());
  progress_.sends(command());
  EXPECT_EQ("\rSP\x1b[K", redrawn());
}

TEST_F(Line, ItStaysInsideTheTerminal) {
  clock_.sleep(kQuietTime);
  progress_.found(3);
  progress_.sends(command());
  screen_.columns = 10;
  EXPECT_EQ("\rSP 1 of 3\x1b[K", redrawn());
  screen_.columns = 9;
  EXPECT_EQ("\r\x1b[K", redrawn());
}

}  // namespace
}  // namespace velhost
