// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string_view>

#include "host/files/filecalls.h"

namespace velhost {

// Throws InputError: "FILE: cannot be written: " and what the errno means.
[[noreturn]] void failWrite(const std::filesystem::path& file, int error);

// Goes on until all is written, however little is taken at a time; waits where the descriptor does
// not. 0, or minus the errno of what went wrong.
int writeAll(FileCalls& calls, int descriptor, std::string_view text);

}  // namespace velhost
