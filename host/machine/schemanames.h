// SPDX-License-Identifier: Apache-2.0
//
// What somebody may have meant who named a class or property that the schema does not have:
// "; did you mean NAME?", or nothing.
#pragma once

#include <string>
#include <string_view>

#include "velhost/schema.h"

namespace velhost {

std::string classSuggestion(std::string_view word);
std::string propertySuggestion(std::string_view word, const NKRXVEL20::host::ClassSchema& cimClass);

}  // namespace velhost
