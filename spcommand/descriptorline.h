// SPDX-License-Identifier: Apache-2.0
//
// Reading the lines of the SP command descriptor table.
#pragma once

#include <optional>
#include <string>

namespace spfirmwarevpd {

// Takes the text before the first "|" off the line, and the bar with it. nullopt when the line has
// no bar: what stands behind the last one is not seen.
std::optional<std::string> takeToken(std::string& line);

// Decimal text as strtol reads it.
int tokenNumber(const std::string& token);

// What a field line says. A part that the line does not give keeps its value, but for the name.
struct FieldLine {
  std::string type;
  int length = 0;
  std::string name;

  void read(std::string line);
};

}  // namespace spfirmwarevpd
