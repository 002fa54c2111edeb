// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/ipmitext.h"

#include <algorithm>
#include <string_view>

namespace ipmiinventory {
namespace {

// 0Dh to 0Fh are reserved in FRU information and these in an SDR's texts.
constexpr std::u32string_view kBcdPlus = U"0123456789 -.:,_";

constexpr char32_t kReplacement = 0xFFFD;

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

bool isIn(char32_t c, char32_t first, char32_t last) { return c >= first && c <= last; }

// RFC 3629. The character is one of Unicode's.
void append(std::string& text, char32_t c) {
  const auto following = [&](unsigned shift) {
    text += static_cast<char>(0x80U | ((c >> shift) & 0x3FU));
  };
  if (c < 0x80) {
    text += static_cast<char>(c);
    return;
  }
  if (c < 0x800) {
    text += static_cast<char>(0xC0U | c >> 6U);
  } else {
    if (c < 0x10000) {
      text += static_cast<char>(0xE0U | c >> 12U);
    } else {
      text += static_cast<char>(0xF0U | c >> 18U);
      following(12);
    }
    following(6);
  }
  following(0);
}

std::string plainText(std::u32string characters) {
  characters.resize(std::min(characters.find(U'\0'), characters.size()));
  std::ranges::replace_if(characters, isControl, U' ');
  const std::size_t first = characters.find_first_not_of(U' ');
  if (first == std::u32string::npos) return {};
  std::string text;
  for (const char32_t c : characters.substr(first, characters.find_last_not_of(U' ') + 1 - first)) {
    append(text, c);
  }
  return text;
}

// The units of UTF-16, an odd byte as one that is none.
std::u32string units(ByteSpan bytes) {
  std::u32string units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units += static_cast<char32_t>(bytes[i] | bytes[i + 1] << 8U);
  }
  if (bytes.size() % 2 != 0) units += kReplacement;
  return units;
}

}  // namespace

std::string hexByte(std::uint8_t byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
}

std::string hexBytes(ByteSpan bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += hexByte(byte);
  return text;
}

std::string hexDigits(ByteSpan bytes) {
  const bool isBlank = std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
  return isBlank ? std::string() : hexBytes(bytes);
}

std::string bcdPlusText(ByteSpan bytes) {
  std::u32string characters;
  for (const std::uint8_t byte : bytes) {
    characters += kBcdPlus[byte >> 4U];
    characters += kBcdPlus[byte & 0x0FU];
  }
  return plainText(std::move(characters));
}

std::string sixBitText(ByteSpan bytes) {
  std::u32string characters;
  unsigned bits = 0;
  unsigned count = 0;
  for (const std::uint8_t byte : bytes) {
    bits |= static_cast<unsigned>(byte) << count;
    for (count += 8; count >= 6; count -= 6) {
      characters += U' ' + (bits & 0x3FU);
      bits >>= 6U;
    }
  }
  return plainText(std::move(characters));
}

std::string latin1Text(ByteSpan bytes) { return plainText({bytes.begin(), bytes.end()}); }

std::string unicodeText(ByteSpan bytes) {
  const std::u32string read = units(bytes);
  std::u32string characters;
  for (std::size_t i = 0; i < read.size(); ++i) {
    const bool pair =
        isIn(read[i], 0xD800, 0xDBFF) && i + 1 < read.size() && isIn(read[i + 1], 0xDC00, 0xDFFF);
    if (pair) {
      characters.push_back(0x10000 + ((read[i] - 0xD800) << 10U) + (read[i + 1] - 0xDC00));
      ++i;
    } else {
      characters += isIn(read[i], 0xD800, 0xDFFF) ? kReplacement : read[i];
    }
  }
  return plainText(std::move(characters));
}

}  // namespace ipmiinventory
