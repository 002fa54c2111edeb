// SPDX-License-Identifier: Apache-2.0
//
// What a signal that ends the program says. The handler is called as the kernel would, with the signal
// blocked, so that the one which ends the program is seen to wait and is thrown away.
#include "host/files/interruption.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "host/files/signalsheld.h"
#include "host/files/statusline.h"
#include "tests/host/scriptedterminal.h"

namespace velhost {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

class Interruption : public testing::Test {
 protected:
  Interruption() { tellInterruptions(); }
  ~Interruption() override {
    for (const int signal : kSignals) std::signal(signal, SIG_DFL);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // What stands on standard error, and " ended" when the signal is sent once more.
  static std::string interrupt(int signal) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    const SignalsHeld held;
    testing::internal::CaptureStderr();
    action.sa_handler(signal);
    std::string told = testing::internal::GetCapturedStderr();
    if (isWaiting(signal)) told += "ended";
    std::signal(signal, SIG_IGN);  // takes away the one that waits
    return told;
  }

  static bool isWaiting(int signal) {
    sigset_t waiting{};
    ::sigpending(&waiting);
    return sigismember(&waiting, signal) == 1;
  }
};

// For as long as a terminal that was stopped may take nothing, and no longer.
TEST_F(Interruption, ALineThatIsBeingDrawnIsWaitedFor) {
  class StoppedTerminal : public ScriptedTerminal {
   public:
    using ScriptedTerminal::ScriptedTerminal;
    void write(std::string_view text) override {
      EXPECT_TRUE(endStatusLine());
      ScriptedTerminal::write(text);
    }
  };
  ScreenText screen;
  StatusLine line(std::make_unique<StoppedTerminal>(screen));
  line.show("one");
  EXPECT_EQ("\rone\x1b[K", screen.take());
}

TEST_F(Interruption, EachSignalIsToldAndEndsTheProgram) {
  for (const int signal : kSignals) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    EXPECT_NE(0, static_cast<int>(action.sa_flags & static_cast<int>(SA_RESETHAND)));
    for (const int held : kSignals) EXPECT_EQ(1, sigismember(&action.sa_mask, held));
    EXPECT_EQ("velhost: interrupted, nothing was written\nended", interrupt(signal));
  }
}

TEST_F(Interruption, TheStatusLineGoesFirst) {
  ScreenText screen;
  const StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  EXPECT_EQ("\r\x1b[Kvelhost: interrupted, nothing was written\nended", interrupt(SIGINT));
}

TEST_F(Interruption, NoLineIsDrawnBehindIt) {
  ScreenText screen;
  StatusLine line(std::make_unique<ScriptedTerminal>(screen));
  interrupt(SIGINT);
  line.show("one");
  EXPECT_EQ("", screen.take());
}

TEST_F(Interruption, AnAnswerThatHasBegunIsNotDenied) {
  noteWritten();
  EXPECT_EQ("velhost: interrupted\nended", interrupt(SIGTERM));
}

TEST_F(Interruption, WithoutStandardErrorItEndsAllTheSame) {
  struct sigaction action {};
  ::sigaction(SIGINT, nullptr, &action);
  const SignalsHeld held;
  const int error = ::dup(STDERR_FILENO);
  ::close(STDERR_FILENO);
  action.sa_handler(SIGINT);
  ::dup2(error, STDERR_FILENO);
  ::close(error);
  EXPECT_TRUE(isWaiting(SIGINT));
  std::signal(SIGINT, SIG_IGN);
}

TEST(Interruptions, ASignalThatIsIgnoredStaysSo) {
  std::signal(SIGINT, SIG_IGN);
  tellInterruptions();
  struct sigaction action {};
  ::sigaction(SIGINT, nullptr, &action);
  EXPECT_EQ(SIG_IGN, action.sa_handler);
  ::sigaction(SIGTERM, nullptr, &action);
  EXPECT_NE(SIG_DFL, action.sa_handler);
  for (const int signal : kSignals) std::signal(signal, SIG_DFL);
}

}  // namespace
}  // namespace velhost
