// SPDX-License-Identifier: Apache-2.0
#include "host/text/utf8.h"

#include <algorithm>
#include <array>

namespace velhost {

bool isContinuation(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

char32_t codePoint(std::string_view sequence) noexcept {
  constexpr std::array<unsigned char, 5> kLeadBits{0, 0x7F, 0x1F, 0x0F, 0x07};  // by length
  char32_t value = static_cast<unsigned char>(sequence[0]) & kLeadBits.at(sequence.size());
  for (const char byte : sequence.substr(1)) {
    value = value << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return value;
}

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";
constexpr std::string_view kEllipsis = "...";

std::string byteEscape(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {'\\', 'x', kHexDigits[value >> 4U], kHexDigits[value & 0xFU]};
}

struct CodeRange {
  char32_t first;
  char32_t last;
};

// What a terminal obeys or does not show, so that a text would look like another one: controls,
// separators and the format characters without a shape of their own (general categories Cc, Zl, Zp
// and Cf). Those below U+0020 have escapes of their own.
constexpr std::array<CodeRange, 10> kUnseen{{
    {0x007F, 0x009F},    // delete and the C1 controls
    {0x00AD, 0x00AD},    // soft hyphen
    {0x061C, 0x061C},    // Arabic letter mark
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200F},    // zero-width space and joiners, direction marks
    {0x2028, 0x202E},    // line and paragraph separator, direction embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, direction isolates
    {0xFEFF, 0xFEFF},    // byte order mark
    {0xFFF9, 0xFFFB},    // interlinear annotation
    {0xE0000, 0xE007F},  // tags
}};

bool isUnseen(char32_t character) noexcept {
  return std::any_of(kUnseen.begin(), kUnseen.end(), [character](const CodeRange& range) {
    return character >= range.first && character <= range.last;
  });
}

std::string unitEscape(char32_t unit) {
  std::string escaped = "\\u";
  for (const unsigned shift : {12U, 8U, 4U, 0U}) escaped += kUpperHexDigits[unit >> shift & 0xFU];
  return escaped;
}

// As JSON has it: in UTF-16, so a character above U+FFFF becomes two (RFC 8259, 7).
std::string unicodeEscape(char32_t character) {
  if (character <= 0xFFFF) return unitEscape(character);
  const char32_t bits = character - 0x10000;
  return unitEscape(0xD800 + (bits >> 10U)) + unitEscape(0xDC00 + (bits & 0x3FFU));
}

std::string controlEscape(char control) {
  if (control == '\n') return "\\n";
  if (control == '\r') return "\\r";
  if (control == '\t') return "\\t";
  return byteEscape(control);
}

std::string seenSequence(std::string_view sequence) {
  const char32_t character = codePoint(sequence);
  return isUnseen(character) ? unicodeEscape(character) : std::string(sequence);
}

// Where the character begins that follows `count` others.
std::size_t offsetOfCharacter(std::string_view text, std::size_t count) noexcept {
  std::size_t at = 0;
  for (; at < text.size(); ++at) {
    if (!isContinuation(text[at]) && count-- == 0) break;
  }
  return at;
}

bool isPlain(char byte) noexcept { return byte >= ' ' && byte <= '~'; }

// Adds the plain characters in front to the result; most of a text is plain.
void takePlain(std::string_view& text, std::string& result) {
  std::size_t length = 0;
  while (length < text.size() && isPlain(text[length])) ++length;
  result += text.substr(0, length);
  text.remove_prefix(length);
}

// Adds what is plain to the result; hands every other UTF-8 sequence to `sequence` and every other byte
// to `stray`.
template <class Sequence, class Stray>
void walk(std::string_view text, std::string& result, Sequence sequence, Stray stray) {
  for (takePlain(text, result); !text.empty(); takePlain(text, result)) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) {
      stray(text[0]);
    } else {
      sequence(text.substr(0, length));
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
}

}  // namespace

std::string visible(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  walk(
      text, result,
      [&](std::string_view sequence) {  // of ASCII what is not plain is a control
        result += sequence.size() == 1 ? controlEscape(sequence[0]) : seenSequence(sequence);
      },
      [&](char stray) { result += byteEscape(stray); });
  return result;
}

std::string escapeUnseen(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  walk(
      text, result, [&](std::string_view sequence) { result += seenSequence(sequence); },
      [&](char stray) { result += stray; });
  return result;
}

std::string shortened(std::string_view text, std::size_t most) {
  const std::size_t count = characterCount(text);
  if (count <= most) return std::string(text);
  const std::size_t kept = most - kEllipsis.size();
  const std::size_t tail = kept / 2;
  std::string result(text.substr(0, offsetOfCharacter(text, kept - tail)));
  result += kEllipsis;
  return result += text.substr(offsetOfCharacter(text, count - tail));
}

std::size_t characterCount(std::string_view text) noexcept {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

}  // namespace velhost
