// SPDX-License-Identifier: Apache-2.0
#include "printmatrix.h"

#include <algorithm>
#include <cstdio>

namespace NKRXVEL20::host {

namespace {

constexpr std::size_t kBytesPerLine = 16;
constexpr std::size_t kOffsetDigits = 4;

std::string hex(std::size_t value, std::size_t digits) {
  std::string text(digits, '0');
  for (std::size_t at = digits; at-- > 0; value /= 16) text[at] = "0123456789ABCDEF"[value % 16];
  return text;
}

// Not isprint(): the text is the same whatever the locale.
char shown(unsigned char byte) {
  return byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
}

std::string lineText(std::size_t offset, std::span<const unsigned char> bytes) {
  std::string line = hex(offset, kOffsetDigits) + ':';
  for (const unsigned char byte : bytes) line += ' ' + hex(byte, 2);
  line.append(3 * (kBytesPerLine - bytes.size()) + 2, ' ');
  for (const unsigned char byte : bytes) line += shown(byte);
  return line + '\n';
}

}  // namespace

std::string matrixText(std::span<const unsigned char> bytes) {
  std::string text;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesPerLine) {
    const std::size_t count = std::min(kBytesPerLine, bytes.size() - offset);
    text += lineText(offset, bytes.subspan(offset, count));
  }
  return text;
}

void printMatrixToStderr(const unsigned char* bytes, int length) {
  const auto count = static_cast<std::size_t>(std::max(length, 0));
  std::fputs(matrixText({bytes, count}).c_str(), stderr);
}

}  // namespace NKRXVEL20::host
