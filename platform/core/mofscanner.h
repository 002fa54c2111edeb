// SPDX-License-Identifier: Apache-2.0
//
// The tokens of a MOF file (DSP0221, annex A).
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "mofcharacters.h"
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
  const auto isSame = [](char x, char y) { return lowered(x) == lowered(y); };
  return a.size() == b.size() && (a == b || std::ranges::equal(a, b, isSame));
}

// Stands before a token once blanks are skipped.
class Scanner {
 public:
  // Strings that are not said in one piece go to `decoded`, which must have room for the text and
  // never grow beyond.
  Scanner(std::string_view text, Place begin, Place end, std::string& decoded)
      : text_(text), at_(begin), end_(end), decoded_(&decoded) {
    skipBlanks();
  }

  Place at() const { return at_; }
  bool isAtEnd() const { return at_ >= end_; }
  bool isAtSymbol(char symbol) const { return peek() == symbol; }
  bool isAtName() const { return is(peek(), kNameStart); }
  bool isAt(std::string_view word) const;  // or symbol

  bool take(char symbol) {
    if (peek() != symbol) return false;
    ++at_;
    skipBlanks();
    return true;
  }

  // Blanks behind it are left. Throws Fault for what is no token, and for tokens that the reader does
  // not take.
  Token token();
  Token name();  // where isAtName()

  // And comments.
  void skipBlanks() {
    if (is(peek(), kBlank) || peek() == '/') skipBlanksAndComments();
  }

 private:
  char peek(std::size_t ahead = 0) const { return text_[at_ + ahead]; }
  void skip(unsigned classes);
  void skipBlanksAndComments();
  void skipComment();
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
