// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

#include "host/files/terminal.h"

namespace velhost {

// What a terminal got. It outlives the terminal.
struct ScreenText {
  bool isInForeground = true;
  std::size_t columns = 80;
  std::string written;

  std::string take() { return std::exchange(written, {}); }
};

class ScriptedTerminal : public Terminal {
 public:
  explicit ScriptedTerminal(ScreenText& screen) : screen_(screen) {}
  bool isInForeground() override { return screen_.isInForeground; }
  std::size_t columns() override { return screen_.columns; }
  void write(std::string_view text) override { screen_.written += text; }

 private:
  ScreenText& screen_;
};

}  // namespace velhost
