// SPDX-License-Identifier: Apache-2.0
//
// The "smbios" section of a machine file.
#pragma once

#include <filesystem>

#include "host/machine/jsondocument.h"
#include "velhost/smbios.h"

namespace velhost {

// `folder` is where the name of a dump starts from. Throws DocumentError.
NKRXVEL20::host::SmbiosTable readSmbiosSection(const Cursor& at,
                                               const std::filesystem::path& folder);

}  // namespace velhost
