// SPDX-License-Identifier: Apache-2.0
//
// The one line on the terminal that changes while the program works, and goes before anything else
// is written there.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "host/files/terminal.h"

namespace velhost {

// Goes to the line's start and clears it.
inline constexpr char kRubOut[] = "\r\x1b[K";

// At most one lives at a time. It may be shown by another thread than the one that writes.
class StatusLine {
 public:
  explicit StatusLine(std::unique_ptr<Terminal> terminal);
  ~StatusLine();
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;

  // How many columns a text may have: the last one is left free, where terminals break lines.
  std::size_t room();

  // In place of what is shown; nothing for an empty text, and while the program is in the background.
  // The text has at most so many columns as there is room.
  void show(const std::string& text);
  void hide();

 private:
  friend class StatusLineHidden;

  void hideLocked();

  std::unique_ptr<Terminal> terminal_;
  std::mutex mutex_;
  std::string shown_;
};

// While it lives no status line is on the terminal, so that something else can be written.
class StatusLineHidden {
 public:
  StatusLineHidden();
  ~StatusLineHidden();
  StatusLineHidden(const StatusLineHidden&) = delete;
  StatusLineHidden& operator=(const StatusLineHidden&) = delete;

 private:
  StatusLine* line_;
};

// For who ends the program in a signal handler: from now on no status line is drawn. True when one
// may be on the terminal.
bool endStatusLine() noexcept;

}  // namespace velhost
