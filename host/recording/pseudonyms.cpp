// SPDX-License-Identifier: Apache-2.0
#include "host/recording/pseudonyms.h"

#include <algorithm>

#include "host/text/hextext.h"

namespace velhost {
namespace {

struct CharacterClass {
  char first;
  char last;
};

constexpr CharacterClass kClasses[] = {
    {'0', '9'}, {'A', 'F'}, {'G', 'Z'}, {'a', 'f'}, {'g', 'z'},
};

const CharacterClass* classOf(char c) {
  const auto* const found = std::ranges::find_if(
      kClasses, [c](const CharacterClass& k) { return c >= k.first && c <= k.last; });
  return found == std::end(kClasses) ? nullptr : found;
}

std::string shapeOf(std::string value) {
  for (char& c : value) {
    if (const CharacterClass* const its = classOf(c)) c = its->first;
  }
  return value;
}

// Counts up like an odometer whose wheels are the character classes.
std::string numbered(std::string shape, std::uint64_t number) {
  std::for_each(shape.rbegin(), shape.rend(), [&number](char& c) {
    const CharacterClass* const its = classOf(c);
    if (its == nullptr) return;
    const unsigned size = static_cast<unsigned>(its->last - its->first) + 1U;
    c = static_cast<char>(its->first + static_cast<char>(number % size));
    number /= size;
  });
  return shape;
}

}  // namespace

std::vector<std::span<unsigned char>> textsIn(std::span<unsigned char> field) {
  const auto isGap = [](unsigned char byte) { return byte == 0; };
  const auto isBlank = [](unsigned char byte) { return byte == ' '; };
  std::vector<std::span<unsigned char>> texts;
  for (auto at = field.begin(); at != field.end();) {
    const auto end = std::find_if(at, field.end(), isGap);
    const auto begin = std::find_if_not(at, end, isBlank);
    const auto behind = std::find_if_not(std::make_reverse_iterator(end),
                                         std::make_reverse_iterator(begin), isBlank)
                            .base();
    if (begin != behind) texts.emplace_back(begin, behind);
    at = std::find_if_not(end, field.end(), isGap);
  }
  return texts;
}

bool isNumber(std::span<const unsigned char> field) {
  const auto isAll = [&](unsigned char value) {
    return std::ranges::all_of(field, [value](unsigned char byte) { return byte == value; });
  };
  return !isAll(0x00) && !isAll(0xFF);
}

const std::string& Pseudonyms::of(const std::string& value) {
  const auto [entry, isNew] = known_.try_emplace(value);
  if (isNew) {
    const std::string shape = shapeOf(value);
    entry->second = numbered(shape, ++countOfShape_[shape]);
  }
  return entry->second;
}

void Pseudonyms::replaceText(std::span<unsigned char> field) {
  for (const auto text : textsIn(field)) {
    std::ranges::copy(of({text.begin(), text.end()}), text.begin());
  }
}

void Pseudonyms::replaceBytes(std::span<unsigned char> field) {
  if (!isNumber(field)) return;
  std::ranges::copy(bytesOfHex(of(hexOfBytes(field))), field.begin());
}

}  // namespace velhost
