// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/collectors/queryresult.h"

namespace velhost {

enum class EmptyClasses {
  kLeftOut,
  kTroubledStay,  // where something is wrong with them
};

// Nobody asked for these classes by name: those without instances are taken out of what was requested.
void leaveOutEmpty(const std::vector<std::string>& classes, EmptyClasses which,
                   QueryResult& result);

}  // namespace velhost
