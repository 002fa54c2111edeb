// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace NKRXVEL20 {

// String number `number` (from 1) of an SMBIOS string set (DSP0134, 6.1.3), of which only the part
// inside `window` is seen. Empty for number 0 and for a number past the last string; a string that
// the window cuts off gives the part inside it.
std::string_view smbiosString(std::string_view window, int number);

}  // namespace NKRXVEL20
