// SPDX-License-Identifier: Apache-2.0
#include "host/recording/credentials.h"

#include <algorithm>
#include <string_view>

#include "host/machine/smbiosparts.h"

namespace velhost {
namespace {

constexpr std::string_view kMark = "io.systemd.credential";

struct Text {
  Bytes::iterator begin;
  Bytes::iterator end;
};

// The text around `at`: from behind the zero byte, or the area of the structure, before it up to
// the next zero byte.
Text textAround(Bytes& structure, Bytes::iterator at) {
  const auto place = static_cast<std::size_t>(at - structure.begin());
  const std::size_t strings = formattedArea(structure).size();
  const std::size_t area = place >= strings ? strings : std::min(place, kSmbiosHeaderSize);
  const auto first = structure.begin() + static_cast<std::ptrdiff_t>(area);
  const auto zero = std::find(std::make_reverse_iterator(at), std::make_reverse_iterator(first), 0);
  return {zero.base(), std::find(at, structure.end(), 0)};
}

std::size_t blankIn(Bytes& structure) {
  std::size_t count = 0;
  for (auto from = structure.begin();; ++count) {
    const auto at = std::search(from, structure.end(), kMark.begin(), kMark.end());
    if (at == structure.end()) return count;
    const Text text = textAround(structure, at);
    *text.begin = ' ';
    from = structure.erase(text.begin + 1, text.end);
  }
}

}  // namespace

std::size_t blankCredentials(NKRXVEL20::host::SmbiosTable& table) {
  std::size_t count = 0;
  for (auto& structure : table.structures) count += blankIn(structure.bytes);
  return count;
}

}  // namespace velhost
