// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

namespace {

[[gnu::constructor]] void fail() { throw std::runtime_error("cannot start"); }

}  // namespace
