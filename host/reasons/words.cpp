// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/words.h"

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::size_t kLongestReason = 240;

}  // namespace

std::string timesText(unsigned count) {
  if (count == 1) return "once";
  if (count == 2) return "twice";
  return std::to_string(count) + " times";
}

std::string secondsText(std::chrono::milliseconds time) {
  constexpr auto kSecond = std::chrono::milliseconds(1000).count();
  std::string text = std::to_string(time.count() / kSecond);
  if (const auto rest = time.count() % kSecond; rest != 0) {
    const std::string digits = std::to_string(kSecond + rest).substr(1);
    text += '.' + digits.substr(0, digits.find_last_not_of('0') + 1);
  }
  return text + " s";
}

std::string listText(const std::vector<std::string>& words) {
  if (words.size() < 2) return words.empty() ? "" : words.front();
  if (words.size() == 2) return words[0] + " or " + words[1];
  return words[0] + " or " + std::to_string(words.size() - 1) + " others";
}

std::string quoted(std::string_view text) { return '"' + visible(text) + '"'; }

std::string reasonLine(std::string_view reason) {
  return shortened(visible(reason), kLongestReason);
}

}  // namespace velhost
