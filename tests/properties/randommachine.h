// SPDX-License-Identifier: Apache-2.0
//
// Random machines, by the grammar of machine files (docs/machine-file.md).
#pragma once

#include <rapidcheck.h>

#include <ostream>
#include <string>

namespace velhost::properties {

// Whether the framework fails for the collectors, and lacks classes.
enum class Framework { kSound, kSometimesFails };

// The text of a machine file, as a failure shows it.
struct MachineText {
  std::string text;
};

inline void showValue(const MachineText& machine, std::ostream& out) { out << machine.text; }

// A failing one shrinks to the smallest that still fails.
rc::Gen<MachineText> randomMachine(Framework framework);

}  // namespace velhost::properties
