// SPDX-License-Identifier: Apache-2.0
//
// Bytes as dates, by the rules of docs/schema.md. nullopt: a form that is left to the collector.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace velhost {

// MM/DD/YY, MM/DD/YYYY, MM-DD-YYYY or YYYY-MM-DD; a text of another length is the date of zeros.
std::optional<std::string> dateOf(std::span<const unsigned char> bytes);

// MM/DD/YY or MM/DD/YYYY; empty for what is neither.
std::optional<std::string> monthDayYear(std::span<const unsigned char> bytes);

// Of three bytes; empty for 0 minutes.
std::optional<std::string> minutesSince1996(std::span<const unsigned char> bytes);

}  // namespace velhost
