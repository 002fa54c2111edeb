// SPDX-License-Identifier: Apache-2.0
#include "host/files/terminal.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace velhost {
namespace {

// Standard error, while it lives, is another file.
class StandardErrorIs {
 public:
  explicit StandardErrorIs(int file) : before_(::dup(STDERR_FILENO)) {
    ::dup2(file, STDERR_FILENO);
  }
  ~StandardErrorIs() {
    ::dup2(before_, STDERR_FILENO);
    ::close(before_);
  }
  StandardErrorIs(const StandardErrorIs&) = delete;
  StandardErrorIs& operator=(const StandardErrorIs&) = delete;

 private:
  int before_;
};

class ErrorTerminal : public testing::Test {
 protected:
  ErrorTerminal() {
    winsize size{24, 100, 0, 0};
    EXPECT_EQ(0, ::openpty(&person_, &program_, nullptr, nullptr, &size));
    const char* const term = std::getenv("TERM");
    if (term != nullptr) term_ = term;
    ::setenv("TERM", "xterm", 1);
  }
  ~ErrorTerminal() override {
    ::close(person_);
    ::close(program_);
    if (term_) {
      ::setenv("TERM", term_->c_str(), 1);
    } else {
      ::unsetenv("TERM");
    }
  }
  ErrorTerminal(const ErrorTerminal&) = delete;
  ErrorTerminal& operator=(const ErrorTerminal&) = delete;

  int person_ = -1;   // the end at which a person would sit
  int program_ = -1;  // the end of the program
  std::optional<std::string> term_;
};

TEST_F(ErrorTerminal, IsStandardError) {
  const StandardErrorIs here(program_);
  const auto terminal = errorTerminal();
  ASSERT_TRUE(terminal);
  EXPECT_EQ(100U, terminal->columns());
  EXPECT_TRUE(terminal->isInForeground()) << "it is not the program's own";
  terminal->write("text");
  std::array<char, 16> read{};
  EXPECT_EQ(4, ::read(person_, read.data(), read.size()));
  EXPECT_STREQ("text", read.data());
}

// In a session of its own, on a terminal that first has its group in front and then another one, as a
// shell does with what goes on behind its prompt.
void exitWithWhereItIs(int terminal) {
  ::setsid();
  ::ioctl(terminal, TIOCSCTTY, 0);
  const StandardErrorIs here(terminal);
  const bool isInFront = errorTerminal()->isInForeground();
  const pid_t other = ::fork();
  if (other == 0) ::_exit(::pause());
  ::setpgid(other, other);
  ::tcsetpgrp(terminal, other);
  const bool isBehind = !errorTerminal()->isInForeground();
  ::kill(other, SIGKILL);
  std::exit(isInFront && isBehind ? 0 : 1);
}

TEST_F(ErrorTerminal, IsInTheForegroundOrBehind) {
  EXPECT_EXIT(exitWithWhereItIs(program_), testing::ExitedWithCode(0), "");
}

TEST_F(ErrorTerminal, HasTheUsualColumnsWhereItTellsNone) {
  const winsize none{};
  EXPECT_EQ(0, ::ioctl(person_, TIOCSWINSZ, &none));
  const StandardErrorIs here(program_);
  EXPECT_EQ(80U, errorTerminal()->columns());
}

TEST_F(ErrorTerminal, IsNoneThatObeysNothing) {
  const StandardErrorIs here(program_);
  for (const char* const term : {"dumb", ""}) {
    ::setenv("TERM", term, 1);
    EXPECT_FALSE(errorTerminal()) << term;
  }
  ::unsetenv("TERM");
  EXPECT_FALSE(errorTerminal());
}

TEST_F(ErrorTerminal, IsNoneWhereStandardErrorIsAnotherFile) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  {
    const StandardErrorIs here(ends[1]);
    EXPECT_FALSE(errorTerminal());
  }
  ::close(ends[0]);
  ::close(ends[1]);
}

// One that has become another file meanwhile.
TEST_F(ErrorTerminal, HasTheUsualColumnsWhereNobodyTells) {
  std::unique_ptr<Terminal> terminal;
  {
    const StandardErrorIs here(program_);
    terminal = errorTerminal();
  }
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  {
    const StandardErrorIs here(ends[1]);
    EXPECT_EQ(80U, terminal->columns());
  }
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace velhost
