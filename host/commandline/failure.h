// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/commandline/commands.h"

namespace velhost {

// Says in one line on standard error what the exception that is being handled says, and returns the
// status that the program ends with. To be called in a catch block only.
ExitStatus tellFailure() noexcept;

}  // namespace velhost
