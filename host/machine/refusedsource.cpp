// SPDX-License-Identifier: Apache-2.0
#include "host/machine/refusedsource.h"

#include <algorithm>

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

}  // namespace velhost
