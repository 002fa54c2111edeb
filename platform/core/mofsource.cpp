// SPDX-License-Identifier: Apache-2.0
#include "mofsource.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "vel/utf8.h"

namespace NKRXVEL20::mof {
namespace {

constexpr std::size_t kLargestSchema = std::size_t{4} << 20U;
constexpr std::size_t kTypicalSchema = std::size_t{64} << 10U;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; }

// Whole words of ASCII are stepped over at once: nearly all of every schema is that.
std::size_t skipAscii(std::string_view text, std::size_t at) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::array<std::uint64_t, 4> words{};
  for (; at + sizeof words <= text.size(); at += sizeof words) {
    std::memcpy(words.data(), text.data() + at, sizeof words);
    if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0) break;
  }
  while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) ++at;
  return at;
}

std::optional<std::size_t> firstIllFormed(std::string_view text) {
  for (std::size_t at = skipAscii(text, 0); at < text.size(); at = skipAscii(text, at)) {
    const std::size_t length = sequenceLength(text.substr(at));
    if (length == 0) return at;
    at += length;
  }
  return std::nullopt;
}

}  // namespace

// So that a typical schema's text never moves; what it does not fill costs nothing.
Source::Source() { text_.reserve(kTypicalSchema); }

void Source::add(std::string name, std::size_t size, const Fill& fill) {
  if (text_.size() - files_.size() + size > kLargestSchema) {
    throw host::SchemaError(name + ": a schema has at most 4 MiB of text");
  }
  const std::size_t begin = text_.size();
  files_.push_back({std::move(name), static_cast<Place>(begin)});
  text_.resize(begin + size + 1);
  fill(std::span(text_).subspan(begin, size));
  const auto illFormed = firstIllFormed(std::string_view(text_).substr(begin, size));
  if (!illFormed) return;
  throw host::SchemaError(where(static_cast<Place>(begin + *illFormed)) + ": is not UTF-8");
}

Place Source::end(std::size_t file) const {
  const auto next = file + 1 < files_.size() ? files_[file + 1].begin : text_.size();
  return static_cast<Place>(next - 1);
}

std::string Source::where(Place at) const {
  const auto after = std::ranges::upper_bound(files_, at, {}, &File::begin);
  const File& file = *std::prev(after);
  const auto before = std::string_view(text_).substr(file.begin, at - file.begin);
  const auto line = 1 + std::ranges::count(before, '\n');
  const auto rest = before.substr(before.rfind('\n') + 1);
  const auto column = 1 + std::ranges::count_if(rest, [](char c) { return !isContinuation(c); });
  return file.name + ':' + std::to_string(line) + ':' + std::to_string(column);
}

}  // namespace NKRXVEL20::mof
