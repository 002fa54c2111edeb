// SPDX-License-Identifier: Apache-2.0
#include "spcommand/descriptorline.h"

#include <cstdlib>

namespace spfirmwarevpd {

std::optional<std::string_view> takeToken(std::string_view& line) {
  const std::size_t bar = line.find('|');
  if (bar == std::string_view::npos) return std::nullopt;
  const std::string_view token = line.substr(0, bar);
  line.remove_prefix(bar + 1);
  return token;
}

int tokenNumber(std::string_view token) {
  return static_cast<int>(std::strtol(std::string(token).c_str(), nullptr, 10));
}

void FieldLine::read(std::string_view line) {
  if (const auto token = takeToken(line)) type = *token;
  if (const auto token = takeToken(line)) length = tokenNumber(*token);
  name = takeToken(line).value_or("");
}

}  // namespace spfirmwarevpd
