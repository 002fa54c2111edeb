// SPDX-License-Identifier: Apache-2.0
//
// Texts behind a byte that gives their encoding and length (IPMI 2.0, 43.15; Platform Management FRU
// Information Storage Definition 1.0 rev. 1.3, 13).
#pragma once

#include <optional>
#include <span>
#include <string>

namespace velhost {

// nullopt: hexadecimal digits or UTF-16, which the byte alone does not tell apart.
std::optional<std::string> typedText(std::span<const unsigned char> bytes);

}  // namespace velhost
