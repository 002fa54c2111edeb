// SPDX-License-Identifier: Apache-2.0
//
// A summary of levels as text: a function a format. `unread` is how many files could not be read.
#pragma once

#include <cstddef>
#include <string>

#include "host/comparison/levelsummary.h"

namespace velhost {

// For people, in lines of `width` characters: model by model its elements, those of one level in a line,
// the machines that have an odd one by name.
std::string summaryTable(const LevelSummary& summary, std::size_t unread, std::size_t width);

// The summary document ("vel-summary/1").
std::string summaryJson(const LevelSummary& summary, std::size_t unread);

// Comma-separated values: a record a level, and one for each class and state that tells none.
std::string summaryCsv(const LevelSummary& summary);

}  // namespace velhost
