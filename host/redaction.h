// SPDX-License-Identifier: Apache-2.0
//
// Takes the serial numbers and unique ids out of a machine's description.
#pragma once

#include "host/machinefile.h"

namespace velhost {

// Puts pseudonyms in their places: SMBIOS structures first, then the replies to dot commands, then
// the instances. docs/machine-file.md lists the places.
void redact(MachineFile& machine);

}  // namespace velhost
