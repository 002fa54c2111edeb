// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace collector {

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

inline bool contains(std::string_view text, char character) {
  return text.find(character) != std::string_view::npos;
}

}  // namespace collector
