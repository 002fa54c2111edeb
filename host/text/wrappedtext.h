// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velhost {

// The words of a text in lines of at most `width` characters, behind `indent` blanks; those behind
// the first line behind `hang`. A word that is longer is broken.
// Pairs of hexadecimal digits that follow each other stay together, eight of them at most.
std::string wrappedText(std::string_view text, std::size_t width, std::size_t indent,
                        std::size_t hang);

// The same behind a lead; lines behind the first begin with as many blanks as it has characters. A lead
// that leaves too little room gets some anyway.
std::string wrappedText(std::string_view lead, std::string_view text, std::size_t width);

}  // namespace velhost
