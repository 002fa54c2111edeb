// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputscreen.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

namespace velhost {
namespace {

std::optional<std::size_t> positiveNumber(const char* text) {
  const std::string_view digits = text == nullptr ? "" : text;
  const char* const end = digits.data() + digits.size();
  std::size_t number = 0;
  const auto [rest, error] = std::from_chars(digits.data(), end, number);
  const bool isNumber = error == std::errc() && rest == end && number > 0;
  return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<std::size_t> terminalColumns(FileCalls& calls) {
  winsize size{};
  const bool isTold = calls.tcgetwinsize(STDOUT_FILENO, size) == 0 && size.ws_col > 0;
  return isTold ? std::optional<std::size_t>(size.ws_col) : std::nullopt;
}

bool isColourful(const ScreenWishes& wishes) {
  const bool isRefused = wishes.noColor != nullptr && *wishes.noColor != '\0';
  return !isRefused && (wishes.term == nullptr || std::string_view(wishes.term) != "dumb");
}

}  // namespace

ScreenWishes screenWishes() {
  return {std::getenv("COLUMNS"), std::getenv("TERM"), std::getenv("NO_COLOR")};
}

Screen standardOutputScreen(const ScreenWishes& wishes, FileCalls& calls) {
  Screen screen;
  screen.hasColour = isColourful(wishes) && calls.isatty(STDOUT_FILENO) == 1;
  auto columns = positiveNumber(wishes.columns);
  if (!columns) columns = terminalColumns(calls);
  screen.width = columns.value_or(screen.width);
  return screen;
}

Screen fileScreen(const ScreenWishes& wishes) {
  Screen screen;
  screen.width = positiveNumber(wishes.columns).value_or(screen.width);
  return screen;
}

}  // namespace velhost
