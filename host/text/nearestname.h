// SPDX-License-Identifier: Apache-2.0
//
// What somebody may have meant who wrote a name that there is not.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace velhost {

// The name that the word is a slip of: letters left out, added, exchanged or of the wrong case, no more
// than one in three, or the end of the name alone ("Vpd" for "KRXSG_Vpd"). Of several that are as
// near the first one; empty when none is near.
std::string_view nearestName(std::string_view word, std::span<const std::string_view> names);

// "; did you mean NAME?", or nothing.
std::string suggestion(std::string_view word, std::span<const std::string_view> names);

}  // namespace velhost
