// SPDX-License-Identifier: Apache-2.0
//
// Any text, taken for a maker's code. One that names a maker is hexadecimal digits for 2 to 8 bytes
// and does so in letters of either case.
#include <algorithm>
#include <cstdint>

#include "collectors/smbiosinventory/memorymaker.h"
#include "tests/fuzz/require.h"

namespace {

using fuzz::require;

bool isCode(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  return text.size() % 2 == 0 && text.size() >= 4 && text.size() <= 16 &&
         text.find_first_not_of(kDigits) == std::string_view::npos;
}

std::string upperCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::string maker = smbiosinventory::makerOfIdText(text);
  require(maker.empty() || isCode(text), "what names a maker is a code");
  require(maker == smbiosinventory::makerOfIdText(upperCase(text)), "letters of either case do");
  return 0;
}
