// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/typedtext.h"

#include <algorithm>

#include "host/explanation/rules.h"
#include "host/recording/packedtext.h"

namespace velhost {
namespace {

enum class Encoding : unsigned { kOpen, kBcdPlus, kSixBit, kLatin1 };

// Latin-1 as UTF-8, controls as blanks.
std::string readable(ByteView characters) {
  std::string text;
  for (const unsigned char c : characters) {
    const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
    if (isControl || c < 0x80) {
      text += isControl ? ' ' : static_cast<char>(c);
    } else {
      text += static_cast<char>(0xC0U | c >> 6U);
      text += static_cast<char>(0x80U | (c & 0x3FU));
    }
  }
  return text;
}

std::string withoutBlanksAround(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::string plain(ByteView characters) {
  const ByteView ended(characters.begin(), std::ranges::find(characters, 0));
  return withoutBlanksAround(readable(ended));
}

}  // namespace

std::optional<std::string> typedText(ByteView bytes) {
  if (bytes.empty()) return "";
  const ByteView field =
      bytes.subspan(1, std::min<std::size_t>(bytes[0] & 0x3FU, bytes.size() - 1));
  switch (static_cast<Encoding>(bytes[0] >> 6U)) {
    case Encoding::kBcdPlus:
      return plain(readBcdPlus(field));
    case Encoding::kSixBit:
      return plain(readSixBit(field));
    case Encoding::kLatin1:
      return plain(field);
    case Encoding::kOpen:
      break;
  }
  if (field.empty()) return "";
  return std::nullopt;
}

}  // namespace velhost
