// SPDX-License-Identifier: Apache-2.0
//
// A machine, asked for all classes by the collectors that stand inside the program.
#pragma once

#include "host/collectors/queryresult.h"
#include "host/machine/machinefile.h"
#include "host/results/findings.h"

namespace fuzz {

// Little enough that it is asked in well under a second.
bool isSmall(const velhost::MachineFile& machine);

// With logs, traffic and steps. Time is the machine's own: its latency takes none.
velhost::Findings ask(velhost::MachineFile machine);

// What `velhost record` makes of it.
velhost::MachineFile recorded(velhost::MachineFile machine, bool redacted);

// The schema that the program's own folder has.
void useSchema();

}  // namespace fuzz
