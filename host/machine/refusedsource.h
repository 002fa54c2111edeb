// SPDX-License-Identifier: Apache-2.0
//
// What of the live machine could not be read although a person could put that right.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "velhost/spdriver.h"

namespace velhost {

struct RefusedSource {
  std::string what;        // "PATH: the system's reason"
  bool forbidden = false;  // to this user; otherwise there is none
};

// By what they tell.
struct RefusedSources {
  std::optional<RefusedSource> smbios;
  std::optional<RefusedSource> ipmi;
};

// One line that names them all and says what to do.
std::string refusalLine(const std::vector<RefusedSource>& sources);

// One line that names the BMC's device, how long it was waited for and what to do.
std::string silenceLine(const NKRXVEL20::host::SilentBmc& bmc);

}  // namespace velhost
