// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace velhost {

// A terminal on which a line may be shown, rubbed out and shown anew.
class Terminal {
 public:
  Terminal() = default;
  virtual ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // The program is the one that the person at the terminal sees.
  virtual bool isInForeground() = 0;
  virtual std::size_t columns() = 0;
  virtual void write(std::string_view text) = 0;  // what cannot be written is lost
};

// Standard error; null when that is no terminal, or one that obeys nothing (TERM is dumb or not set).
std::unique_ptr<Terminal> errorTerminal();

}  // namespace velhost
