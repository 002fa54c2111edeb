// SPDX-License-Identifier: Apache-2.0
#include "host/files/interruption.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string_view>

#include "host/files/statusline.h"

namespace velhost {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};
constexpr std::string_view kNothingWritten = "velhost: interrupted, nothing was written\n";
constexpr std::string_view kInterrupted = "velhost: interrupted\n";

std::atomic<bool>& isWritten() {
  static constinit std::atomic<bool> written{false};
  return written;
}

// Only what POSIX lets a signal handler do.
void write(std::string_view text) noexcept {
  if (::write(STDERR_FILENO, text.data(), text.size()) < 0) return;  // there is no other place
}

// The default is in place again, and ends the program when the handler returns.
void endBySignal(int signal) noexcept {
  if (endStatusLine()) write(kRubOut);
  write(isWritten() ? kInterrupted : kNothingWritten);
  static_cast<void>(::raise(signal));
}

}  // namespace

void tellInterruptions() {
  struct sigaction action {};
  action.sa_handler = endBySignal;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : kSignals) sigaddset(&action.sa_mask, signal);
  for (const int signal : kSignals) {
    struct sigaction before {};
    ::sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  }
}

void noteWritten() noexcept { isWritten() = true; }

}  // namespace velhost
