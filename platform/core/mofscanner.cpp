// SPDX-License-Identifier: Apache-2.0
#include "mofscanner.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <utility>

#include "mofcharacters.h"

namespace NKRXVEL20::mof {
namespace {

constexpr std::size_t kLongestString = 16384;
constexpr std::size_t kLongestName = 255;

// What begins a token of MOF that the reader does not take.
struct Refused {
  char first;
  const char* what;
};

constexpr Refused kRefused[] = {
    {'#', "compiler directives (#pragma) are not taken; every .mof file of the folder is read"},
    {'$', "aliases are not taken"},
    {'\'', "char16 values are not taken"},
};

// "0", or digits that do not begin with 0; a sign may stand before them.
bool isDecimal(std::string_view text) {
  if (text.front() == '-' || text.front() == '+') text.remove_prefix(1);
  return !text.empty() && std::ranges::all_of(text, isDigit) &&
         (text.front() != '0' || text.size() == 1);
}

constexpr std::pair<char, char> kEscapes[] = {{'b', '\b'}, {'t', '\t'}, {'n', '\n'},  {'f', '\f'},
                                              {'r', '\r'}, {'"', '"'},  {'\'', '\''}, {'\\', '\\'}};

// Whether each of eight bytes stands in a string as it is. Subtracting sets the high bit of a byte
// below the bound, of one that XOR makes 0 in particular; those that had it are beyond ASCII.
bool arePlain(std::uint64_t bytes) {
  constexpr std::uint64_t kEach = 0x0101010101010101U;
  const std::uint64_t controls = bytes - kEach * ' ';
  const std::uint64_t deletes = (bytes ^ kEach * 0x7F) - kEach;
  const std::uint64_t quotes = (bytes ^ kEach * '"') - kEach;
  const std::uint64_t escapes = (bytes ^ kEach * '\\') - kEach;
  return ((controls | deletes | quotes | escapes) & ~bytes & kEach * 0x80) == 0;
}

// Where the next byte is that does not stand in a string as it is. Strings are most of a schema.
Place plainEnd(std::string_view text, Place at) {
  std::uint64_t bytes = 0;
  for (; at + sizeof bytes <= text.size(); at += sizeof bytes) {
    std::memcpy(&bytes, text.data() + at, sizeof bytes);
    if (!arePlain(bytes)) break;
  }
  while (is(text[at], kPlain)) ++at;
  return at;
}

bool isSurrogate(unsigned code) { return code >= 0xD800 && code <= 0xDFFF; }

// A character of the basic plane as UTF-8.
void appendCharacter(std::string& text, unsigned code) {
  const auto tail = [](unsigned bits) { return static_cast<char>(0x80U | (bits & 0x3FU)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text.append({static_cast<char>(0xC0U | (code >> 6U)), tail(code)});
  } else {
    text.append({static_cast<char>(0xE0U | (code >> 12U)), tail(code >> 6U), tail(code)});
  }
}

}  // namespace

std::string described(const Token& token) {
  switch (token.kind) {
    case TokenKind::kEnd:
      return "the end of the file";
    case TokenKind::kString:
      return "a string";
    default:
      return '"' + std::string(token.text) + '"';
  }
}

// Ends with the file: the NUL there is of no class.
void Scanner::skip(unsigned classes) {
  Place at = at_;
  while (is(text_[at], classes)) ++at;
  at_ = at;
}

void Scanner::skipBlanksAndComments() {
  for (skip(kBlank); peek() == '/'; skip(kBlank)) skipComment();
}

void Scanner::skipComment() {
  const Place begin = at_;
  const auto rest = text_.substr(0, end_);
  std::size_t after = std::string_view::npos;
  if (peek(1) == '/') {
    after = std::min<std::size_t>(rest.find('\n', at_), end_);
  } else if (peek(1) == '*') {
    after = rest.find("*/", at_ + 2);
    if (after == std::string_view::npos) throw Fault(begin, "the comment does not end");
    after += 2;
  } else {
    refuseCharacter();
  }
  at_ = static_cast<Place>(after);
}

Token Scanner::token() {
  const char first = peek();
  if (at_ >= end_) return {TokenKind::kEnd, {}, end_};
  if (is(first, kNameStart)) return name();
  if (first == '"') return string();
  if (is(first, kDigit | kSign)) return integer();
  if (!is(first, kSymbol)) refuseCharacter();
  return {TokenKind::kSymbol, text_.substr(at_++, 1), at_ - 1};
}

bool Scanner::isAt(std::string_view word) const {
  if (lowered(peek()) != lowered(word.front())) return false;
  if (!isSameIgnoringCase(text_.substr(at_, word.size()), word)) return false;
  return !is(word.back(), kNameCharacter) || !is(peek(word.size()), kNameCharacter);
}

void Scanner::refuseCharacter() {
  const char first = peek();
  const auto* const known = std::ranges::find(kRefused, first, &Refused::first);
  if (known != std::end(kRefused)) throw Fault(at_, known->what);
  if (first > ' ' && first < '\x7F') throw Fault(at_, std::string("unexpected '") + first + "'");
  throw Fault(at_, "unexpected character; only strings and comments may have it");
}

Token Scanner::name() {
  const Place begin = at_++;
  skip(kNameCharacter);
  const std::size_t length = at_ - begin;
  if (length > kLongestName) throw Fault(begin, "has more than 255 characters");
  return {TokenKind::kName, {text_.data() + begin, length}, begin};
}

Token Scanner::integer() {
  Token token = name();
  token.kind = TokenKind::kInteger;
  if (isDecimal(token.text) && peek() != '.') return token;
  throw Fault(token.at, described(token) + " is not taken; numbers are whole and decimal");
}

Token Scanner::string() {
  const Place begin = at_++;
  const Place pieceBegin = at_;
  at_ = plainEnd(text_, at_);
  if (peek() != '"') return joinedString(begin, pieceBegin);
  const Token token{TokenKind::kString, text_.substr(pieceBegin, at_ - pieceBegin), begin};
  ++at_;
  skipBlanks();
  if (peek() == '"') return joinedString(begin, pieceBegin);
  if (token.text.size() > kLongestString) throw Fault(begin, "a string has at most 16384 bytes");
  return token;
}

// Strings that stand one behind the other are one.
Token Scanner::joinedString(Place begin, Place pieceBegin) {
  const std::size_t first = decoded_->size();
  at_ = pieceBegin;
  decodePiece();
  for (skipBlanks(); peek() == '"'; skipBlanks()) {
    ++at_;
    decodePiece();
  }
  const auto text = std::string_view(*decoded_).substr(first);
  if (text.size() > kLongestString) throw Fault(begin, "a string has at most 16384 bytes");
  return {TokenKind::kString, text, begin};
}

// From behind the opening quotation mark to behind the closing one.
void Scanner::decodePiece() {
  const Place begin = at_ - 1;
  for (;;) {
    const Place plain = at_;
    skip(kPlain);
    decoded_->append(text_.substr(plain, at_ - plain));
    if (at_ >= end_ || peek() == '\n' || peek() == '\r') {
      throw Fault(begin, "the string does not end on its line");
    }
    if (peek() == '"') break;
    if (peek() != '\\') throw Fault(at_, "a control character in a string is written as \\xHHHH");
    decodeEscape();
  }
  ++at_;
}

void Scanner::decodeEscape() {
  const char letter = peek(1);
  const auto* const simple = std::ranges::find(kEscapes, letter, &std::pair<char, char>::first);
  if (simple != std::end(kEscapes)) {
    *decoded_ += simple->second;
    at_ += 2;
    return;
  }
  if (letter != 'x' && letter != 'X') throw Fault(at_, "no such escape in a string");
  const auto digits = text_.substr(0, end_).substr(at_ + 2, 4);
  unsigned code = 0;
  const auto [rest, error] = std::from_chars(digits.begin(), digits.end(), code, 16);
  if (error != std::errc() || code == 0 || isSurrogate(code)) {
    throw Fault(at_, "\\x needs one to four hexadecimal digits that name a character");
  }
  appendCharacter(*decoded_, code);
  at_ += 2 + static_cast<Place>(rest - digits.begin());
}

}  // namespace NKRXVEL20::mof
