// SPDX-License-Identifier: Apache-2.0
//
// While it lives, whoever sits at the terminal sees how far a slow collection is.
#pragma once

#include <memory>

#include "host/files/terminal.h"

namespace velhost {

class ProgressDisplay {
 public:
  // On standard error where that is a terminal, otherwise nothing is shown. Has the words of the
  // schema that is current now.
  ProgressDisplay() : ProgressDisplay(errorTerminal()) {}
  explicit ProgressDisplay(std::unique_ptr<Terminal> terminal);
  ~ProgressDisplay();
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

  // Another collection begins. `isLast`: none comes behind it.
  void begin(bool isLast);

 private:
  struct Drawing;
  std::unique_ptr<Drawing> drawing_;  // null: there is no terminal
};

}  // namespace velhost
