// SPDX-License-Identifier: Apache-2.0
//
// A byte buffer as lines of hex, for people who debug.
#pragma once

#include <span>
#include <string>

namespace NKRXVEL20::host {

// A line for each 16 bytes: offset, the bytes in hex, the printable ones as ASCII.
std::string matrixText(std::span<const unsigned char> bytes);

// Writes those lines to standard error. A length below 1 prints nothing.
void printMatrixToStderr(const unsigned char* bytes, int length);

}  // namespace NKRXVEL20::host
