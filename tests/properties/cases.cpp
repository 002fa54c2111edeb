// SPDX-License-Identifier: Apache-2.0
//
// How many cases a property is tried on, and from which seed, where RC_PARAMS does not say: each run of
// the tests tries the same.
#include <stdlib.h>

namespace {

const int kSet = ::setenv("RC_PARAMS", DEFAULT_CASES, 0);

}  // namespace
