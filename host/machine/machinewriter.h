// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/machine/machinefile.h"

namespace velhost {

// The text of a machine file that parseMachineFile reads as this machine again. What has its
// default value is left out. The texts must be UTF-8.
std::string machineFileText(const MachineFile& machine);

}  // namespace velhost
