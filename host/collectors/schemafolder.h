// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace velhost {

// The folder of MOF files built or installed beside a program in `programFolder`. Throws InputError
// when there is none.
std::filesystem::path schemaFolder(const std::filesystem::path& programFolder);

// Makes the classes of that folder the schema of this process. Throws InputError.
void useSchema(const std::filesystem::path& programFolder);

}  // namespace velhost
