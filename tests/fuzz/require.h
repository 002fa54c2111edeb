// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace fuzz {

// Ends the process, which libFuzzer takes for a find, when the condition does not hold.
inline void require(bool condition, std::string_view what = "what is asserted here",
                    const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (condition) return;
  std::cerr << file << ':' << line << ": not so: " << what << '\n';
  std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz
