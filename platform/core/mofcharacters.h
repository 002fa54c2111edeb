// SPDX-License-Identifier: Apache-2.0
//
// Classes of characters in MOF (DSP0221, annex A).
#pragma once

#include <array>
#include <string_view>

#include "asciitext.h"

namespace NKRXVEL20::mof {

constexpr std::string_view kSymbols = "[](){}:;,=";

enum CharacterClass : unsigned char {
  kBlank = 1U << 0U,
  kNameStart = 1U << 1U,
  kNameCharacter = 1U << 2U,
  kDigit = 1U << 3U,
  kSign = 1U << 4U,
  kSymbol = 1U << 5U,
  kPlain = 1U << 6U,  // stands in a string as it is
};

consteval bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }

consteval unsigned char classesOf(char c) {
  const bool isStart = isUpperCase(c) || isLowerCase(c) || c == '_';
  unsigned classes = 0;
  if (c == ' ' || (c >= '\t' && c <= '\r')) classes |= kBlank;
  if (isStart) classes |= kNameStart;
  if (isStart || isDigit(c)) classes |= kNameCharacter;
  if (isDigit(c)) classes |= kDigit;
  if (c == '-' || c == '+') classes |= kSign;
  if (kSymbols.find(c) != std::string_view::npos) classes |= kSymbol;
  if (c != '"' && c != '\\' && !isControl(c)) classes |= kPlain;
  return static_cast<unsigned char>(classes);
}

// A table, as every byte of a schema is looked up at each start of a program.
consteval std::array<unsigned char, 256> classTable() {
  std::array<unsigned char, 256> table{};
  for (unsigned c = 0; c < table.size(); ++c) {
    table[c] = classesOf(static_cast<char>(static_cast<unsigned char>(c)));
  }
  return table;
}

inline constexpr auto kClasses = classTable();

constexpr bool is(char c, unsigned classes) {
  return (kClasses[static_cast<unsigned char>(c)] & classes) != 0;
}

}  // namespace NKRXVEL20::mof
