// SPDX-License-Identifier: Apache-2.0
//
// The tokens of a MOF file (DSP0221, annex A).
#pragma once

#include <string>
#include <string_view>

#include "asciitext.h"
#include "mofsource.h"

namespace NKRXVEL20::mof {

enum class TokenKind { kEnd, kName, kString, kInteger, kSymbol };

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string_view text;  // of a string: what it says
  Place at = 0;
};

// As it is told in an error: "class", a string, the end of the file.
std::string described(const Token& token);

constexpr char lowered(char c) { return isUpperCase(c) ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool isSameIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  std::size_t i = 0;
  while (i < a.size() && (a[i] == b[i] || lowered(a[i]) == lowered(b[i]))) ++i;
  return i == a.size();
}

class Scanner {
 public:
  // Strings that are not said in one piece go to `decoded`, which must have room for the text and
  // never grow beyond.
  Scanner(std::string_view text, Place begin, Place end, std::string& decoded)
      : text_(text), at_(begin), end_(end), decoded_(&decoded) {}

  // Throws Fault for what is no token, and for tokens that the reader does not take.
  Token next();

 private:
  char peek(std::size_t ahead = 0) const;
  void skip(unsigned classes);
  void skipBlanks();
  void skipComment();
  Token word(TokenKind kind);
  Token integer();
  Token string();
  Token joinedString(Place begin, Place pieceBegin);
  void decodePiece();
  void decodeEscape();
  [[noreturn]] void refuseCharacter();

  std::string_view text_;
  Place at_;
  Place end_;
  std::string* decoded_;
};

}  // namespace NKRXVEL20::mof
