// SPDX-License-Identifier: Apache-2.0
//
// Pieces of reasons.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

// "once", "twice", "3 times"
std::string timesText(unsigned count);

// "5 s", "0.25 s"
std::string secondsText(std::chrono::milliseconds time);

// "a", "a or b", "a or 2 others"
std::string listText(const std::vector<std::string>& words);

// In quotes, what a terminal obeys shown as escapes.
std::string quoted(std::string_view text);

// One line of bounded length, however long its pieces are and whatever bytes they hold.
std::string reasonLine(std::string_view reason);

}  // namespace velhost
