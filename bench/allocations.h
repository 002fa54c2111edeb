// SPDX-License-Identifier: Apache-2.0
//
// How often the program and what it has loaded allocate: the program's operator new is replaced.
#pragma once

#include <cstddef>

namespace bench {

std::size_t allocations();  // so far

}  // namespace bench
