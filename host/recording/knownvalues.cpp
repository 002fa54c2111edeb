// SPDX-License-Identifier: Apache-2.0
#include "host/recording/knownvalues.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "host/text/hextext.h"

namespace velhost {
namespace {

constexpr std::size_t kShortestText = 4;
constexpr std::size_t kShortestNumber = 4;
constexpr std::size_t kTellingBytes = 3;
constexpr std::size_t kUuidSize = 16;
constexpr std::size_t kUuidDashes[] = {8, 13, 18, 23};
constexpr std::size_t kUuidTextSize = 2 * kUuidSize + std::size(kUuidDashes);
constexpr std::size_t kLongest = 256;  // of a longer value the beginning is enough

// What firmware writes where there is no value, in upper case.
constexpr std::string_view kNoValues[] = {
    "NONE",
    "EMPTY",
    "UNKNOWN",
    "INVALID",
    "UNDEFINED",
    "NOT SPECIFIED",
    "NOT AVAILABLE",
    "NOT APPLICABLE",
    "NOT PRESENT",
    "NOT SET",
    "DEFAULT",
    "DEFAULT STRING",
    "TO BE FILLED BY O.E.M.",
    "SERIAL NUMBER",
    "SYSTEM SERIAL NUMBER",
    "BASE BOARD SERIAL NUMBER",
    "CHASSIS SERIAL NUMBER",
    "ASSET TAG",
    "NO ASSET TAG",
    "NO ASSET INFORMATION",
};

unsigned char upperCase(unsigned char c) {
  return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 'a' + 'A') : c;
}

unsigned char lowerCase(unsigned char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c - 'A' + 'a') : c;
}

unsigned char unchanged(unsigned char c) { return c; }

std::string upperCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return static_cast<char>(upperCase(static_cast<unsigned char>(c)));
  });
  return text;
}

bool isTellingText(const std::string& value) {
  return value.size() >= kShortestText &&
         value.find_first_not_of(value.front()) != std::string::npos &&
         std::ranges::count(kNoValues, upperCase(value)) == 0;
}

bool isTellingNumber(const Bytes& value) {
  const auto isUsual = [](unsigned char byte) { return byte == 0x00 || byte == 0xFF; };
  const auto isPrintable = [](unsigned char byte) { return byte >= ' ' && byte <= '~'; };
  return value.size() >= kShortestNumber &&
         value.size() - static_cast<std::size_t>(std::ranges::count_if(value, isUsual)) >=
             kTellingBytes &&
         !std::ranges::all_of(value, isPrintable);
}

std::string textOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::string inUtf16(const std::string& text) {
  std::string wide;
  for (const char c : text) wide += {c, '\0'};
  return wide;
}

std::string withDashes(std::string digits) {
  for (const std::size_t at : kUuidDashes) digits.insert(at, 1, '-');
  return digits;
}

bool hasUuidsDashes(const std::string& text) {
  return text.size() == kUuidTextSize &&
         std::ranges::all_of(kUuidDashes, [&](std::size_t at) { return text[at] == '-'; });
}

// Empty where the value is no number.
Bytes bytesOfNumber(std::string value) {
  if (hasUuidsDashes(value)) std::erase(value, '-');
  if (value.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos) return {};
  return value.size() % 2 == 0 ? bytesOfHex(value) : Bytes();
}

// The first three fields of a UUID have their lower bytes first, or not.
Bytes otherByteOrder(Bytes uuid) {
  std::reverse(uuid.begin(), uuid.begin() + 4);
  std::reverse(uuid.begin() + 4, uuid.begin() + 6);
  std::reverse(uuid.begin() + 6, uuid.begin() + 8);
  return uuid;
}

// Of forms that differ in case only the one that is written as it stands there.
template <class Form>
const Form& writtenAlike(std::span<const Form> forms, std::span<const unsigned char> bytes) {
  const auto found = std::ranges::find_if(forms, [&](const Form& form) {
    return std::ranges::equal(form.value, bytes.first(form.value.size()), {},
                              [](char c) { return static_cast<unsigned char>(c); });
  });
  return found == forms.end() ? forms.front() : *found;
}

// The longest of the sorted forms that the bytes begin with, or null.
template <class Form>
const Form* longestAt(std::span<const Form> forms, std::span<const unsigned char> bytes,
                      unsigned char (*keyOf)(unsigned char)) {
  const Form* longest = nullptr;
  for (std::size_t at = 0; at < bytes.size() && !forms.empty(); ++at) {
    const unsigned char key = keyOf(bytes[at]);
    const auto keyIn = [at](const Form& form) { return static_cast<unsigned char>(form.key[at]); };
    const auto begin = std::partition_point(forms.begin(), forms.end(),
                                            [&](const Form& form) { return keyIn(form) < key; });
    const auto end = std::partition_point(begin, forms.end(),
                                          [&](const Form& form) { return keyIn(form) == key; });
    const auto goesOn =
        std::find_if(begin, end, [at](const Form& form) { return form.key.size() > at + 1; });
    if (goesOn != begin) longest = &writtenAlike(std::span<const Form>(begin, goesOn), bytes);
    forms = {goesOn, end};
  }
  return longest;
}

// In the case of what stands there.
void put(const std::string& replacement, std::span<unsigned char> bytes) {
  std::ranges::transform(replacement, bytes, bytes.begin(), [](char to, unsigned char from) {
    const auto byte = static_cast<unsigned char>(to);
    if (lowerCase(from) != from) return upperCase(byte);
    return upperCase(from) != from ? lowerCase(byte) : byte;
  });
}

}  // namespace

void KnownValues::add(const std::string& value, const std::string& replacement) {
  if (!isTellingText(value)) return;
  addText(value, replacement);
  if (bytesOfNumber(value).size() == kUuidSize) {
    addUuid(value, replacement);
  } else {
    addBytes(value, replacement);
  }
}

void KnownValues::addText(const std::string& value, const std::string& replacement) {
  for (const auto& write : {+[](const std::string& text) { return text; }, &inUtf16}) {
    const std::string written = write(value).substr(0, kLongest);
    texts_.push_back({upperCase(written), written, write(replacement).substr(0, kLongest)});
  }
}

void KnownValues::addBytes(const std::string& value, const std::string& replacement) {
  const Bytes bytes = bytesOfNumber(value);
  if (!isTellingNumber(bytes)) return;
  const std::string key = textOf(bytes).substr(0, kLongest);
  numbers_.push_back({key, key, textOf(bytesOfNumber(replacement)).substr(0, kLongest)});
}

void KnownValues::addUuid(const std::string& value, const std::string& replacement) {
  const auto unchangedOrder = [](Bytes bytes) { return bytes; };
  for (const auto& order : {+unchangedOrder, &otherByteOrder}) {
    const Bytes from = order(bytesOfNumber(value));
    const Bytes to = order(bytesOfNumber(replacement));
    numbers_.push_back({textOf(from), textOf(from), textOf(to)});
    addText(hexOfBytes(from), hexOfBytes(to));
    addText(withDashes(hexOfBytes(from)), withDashes(hexOfBytes(to)));
  }
}

void KnownValues::seal() {
  const auto order = [](const Form& form) { return std::tie(form.key, form.value); };
  for (Forms* const forms : {&texts_, &numbers_}) {
    std::ranges::stable_sort(*forms, {}, order);
    const auto rest = std::unique(
        forms->begin(), forms->end(),
        [order](const Form& one, const Form& next) { return order(one) == order(next); });
    forms->erase(rest, forms->end());
  }
}

void KnownValues::replaceIn(std::span<unsigned char> bytes) const {
  while (!bytes.empty()) {
    const Form* const text = longestAt<Form>(texts_, bytes, upperCase);
    const Form* const number = longestAt<Form>(numbers_, bytes, unchanged);
    const std::size_t textSize = text == nullptr ? 0 : text->key.size();
    const std::size_t numberSize = number == nullptr ? 0 : number->key.size();
    if (numberSize > textSize) {
      std::ranges::copy(number->replacement, bytes.begin());
    } else if (textSize > 0) {
      put(text->replacement, bytes.first(textSize));
    }
    bytes = bytes.subspan(std::max({textSize, numberSize, std::size_t{1}}));
  }
}

}  // namespace velhost
