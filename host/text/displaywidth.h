// SPDX-License-Identifier: Apache-2.0
//
// How much room a text takes on a terminal. Texts are as visible() gives them: UTF-8 without
// controls.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

// In columns: East Asian characters take two, combining marks none.
std::size_t displayWidth(std::string_view text);

// At most `width` columns: "..." stands for the middle of a text that is wider, as either end of it
// says something.
std::string cutToWidth(std::string_view text, std::size_t width);

// The text in lines of at most `width` columns, from 1, broken at blanks or in words that are longer.
// At least one line.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

// The same, broken between these words alone as long as a word is no longer than a line.
std::vector<std::string> wrappedWords(const std::vector<std::string_view>& words,
                                      std::size_t width);

// The text and as many blanks as it lacks to so many columns.
std::string padded(std::string_view text, std::size_t width);

}  // namespace velhost
