// SPDX-License-Identifier: Apache-2.0
//
// The collectors stand inside the program, so that libFuzzer sees their ways: what it steers by must not be
// unloaded. PluginLoader is defined here, and makes the collector that a file's name means.
#pragma once

#include "host/collectors/collectorset.h"
#include "host/machine/machinefile.h"

namespace fuzz {

// Of the machine: the firmware collector, and those listed that ask nothing of the machine that the program
// runs on.
velhost::CollectorFiles collectorsOf(const velhost::MachineFile& machine);

}  // namespace fuzz
