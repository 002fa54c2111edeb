// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "host/machine/jsondocument.h"
#include "host/machine/machinefile.h"

namespace velhost {

// What the document of a machine file says; `file` is where its own files are looked for. Throws
// DocumentError.
MachineFile machineOfDocument(const Json& document, const std::filesystem::path& file);

}  // namespace velhost
