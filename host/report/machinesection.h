// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/report/badge.h"
#include "host/report/html.h"
#include "host/report/machineview.h"

namespace velhost {

// The section of a machine, as its nodes and parts stand in it.
Html machineSection(const MachineView& machine, const Anchor& anchor);

// How the machine's places are filled: those of all its boxes.
Tally tallyOf(const MachineView& machine);

// "server.json, machine file, 2 nodes, type 6120AC1"
Html machineFacts(const MachineView& machine);

}  // namespace velhost
