// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#include "vel/cimvalue.h"
#include "velhost/schema.h"

namespace velhost {

// A property's value as people read it, in one line that visible() let pass:
//   - the name that the schema's Values give it, where they do ("Running", not 3);
//   - a number in hexadecimal where the schema says so (0xE0000000);
//   - a date as dateText has it, a boolean as yes or no;
//   - a text without the blanks at its end.
// Empty: nothing was told, or only blanks. The class may be null, for one that the schema lacks.
std::string shownValue(const NKRXVEL20::host::ClassSchema* cimClass, std::string_view property,
                       const NKRXVEL20::TCIMValue& value);

}  // namespace velhost
