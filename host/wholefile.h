// SPDX-License-Identifier: Apache-2.0
//
// Files read whole.
#pragma once

#include <filesystem>
#include <string>

namespace velhost {

// Throws std::system_error, whose code says why the file cannot be read. A file above 64 MiB is
// refused (std::errc::file_too_large), so that a device that never ends cannot fill the memory.
std::string readWholeFile(const std::filesystem::path& file);

}  // namespace velhost
