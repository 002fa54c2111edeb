// SPDX-License-Identifier: Apache-2.0
#include "host/text/hextext.h"

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

unsigned digitValue(std::string_view text, std::size_t at) {
  const char c = text[at];
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  const std::size_t length = std::max<std::size_t>(1, sequenceLength(text.substr(at)));
  throw HexTextError("character " + std::to_string(characterCount(text.substr(0, at)) + 1) +
                     " is no hex digit: \"" + visible(text.substr(at, length)) + "\"");
}

}  // namespace

Bytes bytesOfHex(std::string_view text) {
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == ' ') continue;
    const unsigned high = digitValue(text, at);
    if (++at == text.size()) throw HexTextError("the last hex pair has only one digit");
    if (text[at] == ' ') {
      throw HexTextError("blank inside a hex pair at character " + std::to_string(at + 1));
    }
    bytes.push_back(static_cast<unsigned char>(high << 4U | digitValue(text, at)));
  }
  return bytes;
}

std::string hexOfBytes(std::span<const unsigned char> bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

std::string hexPairs(std::span<const unsigned char> bytes) {
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const unsigned char byte : bytes) {
    if (!text.empty()) text += ' ';
    text += hexOfBytes({&byte, 1});
  }
  return text;
}

}  // namespace velhost
