// SPDX-License-Identifier: Apache-2.0
#include "vel/utf8.h"

#include <algorithm>
#include <array>

namespace NKRXVEL20 {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

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
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    result += length == 0 ? kReplacement : text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

}  // namespace NKRXVEL20
