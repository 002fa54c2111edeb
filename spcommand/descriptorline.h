// SPDX-License-Identifier: Apache-2.0
//
// Reading the lines of the SP command descriptor table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace spfirmwarevpd {

// Takes the text before the first "|" off the line, and the bar with it. nullopt when the line has
// no bar: what stands behind the last one is not seen.
std::optional<std::string_view> takeToken(std::string_view& line);

// Decimal text as strtol reads it.
int tokenNumber(std::string_view token);

// What a field line says. A part that the line does not give keeps its value, but for the name.
struct FieldLine {
  std::string type;
  int length = 0;
  std::string name;

  void read(std::string_view line);
};

}  // namespace spfirmwarevpd
