// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/report/html.h"
#include "host/results/findings.h"

namespace velhost {

// A machine, and the name of the file that tells of it.
struct ToldMachine {
  Findings findings;
  std::string file;
};

// What is different in the second from the first, class by class. Throws std::logic_error as
// compared does.
Html changesSection(const ToldMachine& before, const ToldMachine& after);

}  // namespace velhost
