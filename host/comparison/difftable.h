// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "host/comparison/comparison.h"

namespace velhost {

// A file whose findings are compared.
struct ComparedFile {
  std::string name;
  const Findings& findings;
};

// The differences for people, in lines of `width` characters: what is different class by class, then
// what cannot be told, at the end how much it is.
std::string differenceTable(const ComparedFile& before, const ComparedFile& after,
                            const Comparison& comparison, std::size_t width);

}  // namespace velhost
