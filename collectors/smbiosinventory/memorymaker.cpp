// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/memorymaker.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <vector>

#include "vpd/jedecmakers.h"

namespace smbiosinventory {
namespace {

constexpr unsigned char kContinuation = 0x7F;
constexpr unsigned char kWithoutParity = 0x7F;
constexpr std::size_t kFewestBytes = 2;
constexpr std::size_t kMostBytes = 8;

using Bytes = std::span<const unsigned char>;
using spfirmwarevpd::jedecMaker;

std::string makerByCount(unsigned char continuations, unsigned char code) {
  return jedecMaker(static_cast<std::size_t>(continuations & kWithoutParity), code);
}

// Continuation codes, the code, and zeros up to the end.
std::string makerBehindContinuations(Bytes bytes) {
  const auto code = std::ranges::find_if(bytes, [](auto byte) { return byte != kContinuation; });
  if (code == bytes.end()) return {};
  if (!std::all_of(code + 1, bytes.end(), [](auto byte) { return byte == 0; })) return {};
  return jedecMaker(static_cast<std::size_t>(code - bytes.begin()), *code);
}

// Empty unless the text is hexadecimal digits for as many bytes as a code has.
std::vector<unsigned char> bytesOf(std::string_view hex) {
  std::vector<unsigned char> bytes;
  if (hex.size() % 2 != 0 || hex.size() < 2 * kFewestBytes || hex.size() > 2 * kMostBytes)
    return {};
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const char* const end = hex.data() + i + 2;
    if (std::from_chars(hex.data() + i, end, bytes.emplace_back(), 16).ptr != end) return {};
  }
  return bytes;
}

std::string firstOf(std::initializer_list<std::string> makers) {
  const auto* const found = std::ranges::find_if_not(makers, &std::string::empty);
  return found == makers.end() ? "" : *found;
}

std::string makerOfNumber(Bytes bytes) {
  return bytes.size() == 2 ? makerByCount(bytes[1], bytes[0]) : "";
}

}  // namespace

std::string makerOfModuleId(std::uint16_t id) {
  return makerByCount(static_cast<unsigned char>(id & 0xFFU), static_cast<unsigned char>(id >> 8U));
}

// The forms hardly overlap, as there are few banks; where they do, a prefix tells the number.
std::string makerOfIdText(std::string_view text) {
  const bool isNumber = text.starts_with("0x") || text.starts_with("0X");
  const auto bytes = bytesOf(text.substr(isNumber ? 2 : 0));
  if (bytes.empty()) return {};
  const std::string byNumber = makerOfNumber(bytes);
  return firstOf({isNumber ? byNumber : "", makerByCount(bytes[0], bytes[1]),
                  makerBehindContinuations(bytes), byNumber});
}

}  // namespace smbiosinventory
