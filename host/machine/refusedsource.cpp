// SPDX-License-Identifier: Apache-2.0
#include "host/machine/refusedsource.h"

#include <algorithm>
#include <string>

namespace velhost {

std::string refusalLine(const std::vector<RefusedSource>& sources) {
  std::string line = "cannot read ";
  for (const RefusedSource& source : sources) {
    if (&source != &sources.front()) line += ", ";
    line += source.what;
  }
  const bool rootHelps = std::ranges::any_of(sources, &RefusedSource::forbidden);
  line += rootHelps ? "; run velhost as root, or name a machine file with --machine FILE"
                    : "; this system shows none; name a machine file with --machine FILE";
  return line;
}

std::string silenceLine(const NKRXVEL20::host::SilentBmc& bmc) {
  const auto tenths = (bmc.waited.count() + 50) / 100;
  return "the BMC behind " + bmc.device + " did not answer within " + std::to_string(tenths / 10) +
         "." + std::to_string(tenths % 10) +
         " s, what it knows is missing; ask again when it is up, or reset it with ipmitool mc "
         "reset "
         "cold";
}

}  // namespace velhost
