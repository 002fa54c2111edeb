// SPDX-License-Identifier: Apache-2.0
#include "host/files/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "host/files/filecalls.h"
#include "host/files/writeall.h"

namespace velhost {
namespace {

constexpr std::size_t kUsualColumns = 80;

class ErrorTerminal : public Terminal {
 public:
  // A terminal that is not the program's own has no foreground.
  bool isInForeground() override {
    const pid_t group = ::tcgetpgrp(STDERR_FILENO);
    return group < 0 || group == ::getpgrp();
  }
  std::size_t columns() override {
    winsize size{};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): it is declared so
    const bool isTold = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isTold ? size.ws_col : kUsualColumns;
  }
  void write(std::string_view text) override {
    static_cast<void>(writeAll(kernelFiles(), STDERR_FILENO, text));
  }
};

bool obeys(const char* name) {
  return name != nullptr && *name != '\0' && std::string_view(name) != "dumb";
}

}  // namespace

Terminal::~Terminal() = default;

std::unique_ptr<Terminal> errorTerminal() {
  if (kernelFiles().isatty(STDERR_FILENO) != 1 || !obeys(std::getenv("TERM"))) return nullptr;
  return std::make_unique<ErrorTerminal>();
}

}  // namespace velhost
