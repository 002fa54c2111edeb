// SPDX-License-Identifier: Apache-2.0
#include "host/files/statusline.h"

#include <ctime>
#include <utility>

namespace velhost {
namespace {

// A signal handler reads it but for the first.
struct Shared {
  StatusLine* current = nullptr;  // of the thread that writes
  std::atomic<bool> isAny{false};
  std::atomic<bool> isEnded{false};
  std::atomic<bool> isDrawing{false};
};
static_assert(std::atomic<bool>::is_always_lock_free);

Shared& shared() {
  static constinit Shared state;
  return state;
}

// A terminal that was stopped takes nothing, and who wants to end the program does not wait for it.
constexpr int kMostWaits = 100;
constexpr timespec kWait{0, 1000000};

void draw(Terminal& terminal, const std::string& text) {
  shared().isDrawing = true;
  if (!shared().isEnded) terminal.write(text);
  shared().isDrawing = false;
}

}  // namespace

StatusLine::StatusLine(std::unique_ptr<Terminal> terminal) : terminal_(std::move(terminal)) {
  shared().current = this;
  shared().isAny = true;
}

StatusLine::~StatusLine() {
  hide();
  shared().isAny = false;
  shared().current = nullptr;
}

std::size_t StatusLine::room() {
  const std::size_t columns = terminal_->columns();
  return columns > 0 ? columns - 1 : 0;
}

void StatusLine::show(const std::string& text) {
  if (text.empty() || !terminal_->isInForeground()) return hide();
  const std::lock_guard lock(mutex_);
  if (text == shown_) return;
  draw(*terminal_, "\r" + text + "\x1b[K");
  shown_ = text;
}

void StatusLine::hide() {
  const std::lock_guard lock(mutex_);
  hideLocked();
}

void StatusLine::hideLocked() {
  if (std::exchange(shown_, {}).empty()) return;
  if (terminal_->isInForeground()) draw(*terminal_, kRubOut);
}

StatusLineHidden::StatusLineHidden() : line_(shared().current) {
  if (line_ == nullptr) return;
  line_->mutex_.lock();
  line_->hideLocked();
}

StatusLineHidden::~StatusLineHidden() {
  if (line_ != nullptr) line_->mutex_.unlock();
}

bool endStatusLine() noexcept {
  Shared& state = shared();
  state.isEnded = true;
  for (int i = 0; i < kMostWaits && state.isDrawing; ++i) ::nanosleep(&kWait, nullptr);
  return state.isAny;
}

}  // namespace velhost
