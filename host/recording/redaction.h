// SPDX-License-Identifier: Apache-2.0
//
// Takes the serial numbers and unique ids out of a machine's description.
#pragma once

#include "host/machine/machinefile.h"

namespace velhost {

// Puts pseudonyms in the places of the values that stand in identifying fields, there and wherever
// else they stand: in SMBIOS structures, in what SPs and BMCs were asked and answered, in the
// instances, in the name and the description. The values are counted as they stand in the fields of
// the SMBIOS structures first, then of the replies to dot commands, then of the instances.
// docs/machine-file.md lists the fields.
void redact(MachineFile& machine);

}  // namespace velhost
