// SPDX-License-Identifier: Apache-2.0
#include "host/utf8.h"

#include <algorithm>
#include <array>

namespace velhost {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view kHexDigits = "0123456789abcdef";

struct ByteRange {
  unsigned char first;
  unsigned char last;
};

// The well-formed sequences of Unicode's table 3-7: lead bytes, length, range of the second byte
// (which shuts out overlong forms, surrogates and what lies above U+10FFFF).
struct SequenceForm {
  ByteRange lead;
  std::size_t length;
  ByteRange second;
};

constexpr std::array<SequenceForm, 9> kForms{{
    {{0x00, 0x7F}, 1, {0x00, 0xFF}},
    {{0xC2, 0xDF}, 2, {0x80, 0xBF}},
    {{0xE0, 0xE0}, 3, {0xA0, 0xBF}},
    {{0xE1, 0xEC}, 3, {0x80, 0xBF}},
    {{0xED, 0xED}, 3, {0x80, 0x9F}},
    {{0xEE, 0xEF}, 3, {0x80, 0xBF}},
    {{0xF0, 0xF0}, 4, {0x90, 0xBF}},
    {{0xF1, 0xF3}, 4, {0x80, 0xBF}},
    {{0xF4, 0xF4}, 4, {0x80, 0x8F}},
}};

constexpr ByteRange kContinuation{0x80, 0xBF};

bool within(ByteRange range, char byte) noexcept {
  const auto value = static_cast<unsigned char>(byte);
  return value >= range.first && value <= range.last;
}

bool matches(const SequenceForm& form, std::string_view text) noexcept {
  if (!within(form.lead, text[0]) || text.size() < form.length) return false;
  if (form.length > 1 && !within(form.second, text[1])) return false;
  const std::string_view tail = text.substr(std::min<std::size_t>(2, form.length),
                                            form.length - std::min<std::size_t>(2, form.length));
  return std::all_of(tail.begin(), tail.end(), [](char c) { return within(kContinuation, c); });
}

std::string byteEscape(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {'\\', 'x', kHexDigits[value >> 4U], kHexDigits[value & 0xFU]};
}

bool isControl(std::string_view sequence) noexcept {
  const auto first = static_cast<unsigned char>(sequence[0]);
  if (sequence.size() == 1) return first < 0x20 || first == 0x7F;
  return sequence.size() == 2 && first == 0xC2 && within({0x80, 0x9F}, sequence[1]);
}

std::string controlEscape(std::string_view sequence) {
  if (sequence == "\n") return "\\n";
  if (sequence == "\r") return "\\r";
  if (sequence == "\t") return "\\t";
  std::string escaped;
  for (const char byte : sequence) escaped += byteEscape(byte);
  return escaped;
}

// Hands every UTF-8 sequence to `sequence` and every other byte to `stray`.
template <class Sequence, class Stray>
void walk(std::string_view text, Sequence sequence, Stray stray) {
  while (!text.empty()) {
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

std::size_t sequenceLength(std::string_view text) noexcept {
  if (text.empty()) return 0;
  const auto* const form = std::find_if(kForms.begin(), kForms.end(),
                                        [&](const SequenceForm& f) { return matches(f, text); });
  return form == kForms.end() ? 0 : form->length;
}

bool isUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string toUtf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  walk(
      text, [&](std::string_view sequence) { result += sequence; },
      [&](char) { result += kReplacement; });
  return result;
}

std::string visible(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  walk(
      text,
      [&](std::string_view sequence) {
        if (isControl(sequence)) {
          result += controlEscape(sequence);
        } else {
          result += sequence;
        }
      },
      [&](char stray) { result += byteEscape(stray); });
  return result;
}

std::size_t characterCount(std::string_view text) noexcept {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !within(kContinuation, c); }));
}

}  // namespace velhost
