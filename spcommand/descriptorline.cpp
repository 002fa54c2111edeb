// SPDX-License-Identifier: Apache-2.0
#include "spcommand/descriptorline.h"

#include <cstdlib>

namespace spfirmwarevpd {

std::optional<std::string> takeToken(std::string& line) {
  const std::size_t bar = line.find('|');
  if (bar == std::string::npos) return std::nullopt;
  std::string token = line.substr(0, bar);
  line.erase(0, bar + 1);
  return token;
}

int tokenNumber(const std::string& token) {
  return static_cast<int>(std::strtol(token.c_str(), nullptr, 10));
}

void FieldLine::read(std::string line) {
  if (const auto token = takeToken(line)) type = *token;
  if (const auto token = takeToken(line)) length = tokenNumber(*token);
  name = takeToken(line).value_or("");
}

}  // namespace spfirmwarevpd
