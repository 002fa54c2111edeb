// SPDX-License-Identifier: Apache-2.0
//
// Where the collectors of a run are.
#pragma once

#include <filesystem>
#include <vector>

#include "host/collectors/collectorset.h"
#include "host/machine/machine.h"

namespace velhost {

// The folder of the running program.
std::filesystem::path programFolder();

// The folder of the collectors that were built or installed beside a program in `programFolder`.
// Throws InputError when the firmware collector is in none.
std::filesystem::path collectorsFolder(const std::filesystem::path& programFolder);

// Its plug-ins, *.pi.so, in the order of their names.
std::vector<std::filesystem::path> pluginsIn(const std::filesystem::path& folder);

// The plug-ins that were named, where any were. Otherwise those beside the program: on the live
// machine all of them; for a machine file the firmware collector and those that the file lists.
CollectorFiles collectorFiles(const std::vector<std::filesystem::path>& named,
                              const Machine& machine, const std::filesystem::path& programFolder);

}  // namespace velhost
