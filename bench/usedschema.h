// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <benchmark/benchmark.h>

#include "velhost/schema.h"

namespace bench {

// For a benchmark's Setup: the classes of schema/ are those of the process, read once.
inline void useSchema(const benchmark::State& /*state*/) {
  static const bool isRead =
      (NKRXVEL20::host::setSchema(NKRXVEL20::host::readSchema(SCHEMA_DIR)), true);
  static_cast<void>(isRead);
}

}  // namespace bench
