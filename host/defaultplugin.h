// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace velhost {

// The firmware collector built or installed beside a program in `programFolder`. Throws InputError
// when there is none.
std::filesystem::path defaultPlugin(const std::filesystem::path& programFolder);

// The folder of the running program.
std::filesystem::path programFolder();

}  // namespace velhost
