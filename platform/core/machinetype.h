// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NKRXVEL20 {

// What the host has set in place of the machine's own type.
const std::optional<std::string>& machineTypeOverride();

// From the Product Name of the first System Information structure (SMBIOS type 1), empty when there
// is none or the SMBIOS library cannot be opened.
std::string machineTypeFromSmbios();

// A run of seven letters and digits that starts with four digits and stands by itself (a machine
// type-model, as 5010AC1) gives its first four characters; failing that, a run of four digits that
// stands by itself; failing that, the empty text.
std::string_view machineTypeFromProductName(std::string_view productName);

}  // namespace NKRXVEL20
