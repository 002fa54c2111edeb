// SPDX-License-Identifier: Apache-2.0
//
// The first byte picks the kind of area, the rest is the area, as it stands and once more with its
// version, length and checksum mended. What it gives is text, of properties that the kind has, each
// once, and does not depend on what is behind the area; a wrong checksum gives none.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <set>
#include <string_view>

#include "collectors/ipmiinventory/fruarea.h"
#include "tests/fuzz/require.h"
#include "vel/utf8.h"

using namespace ipmiinventory;

namespace {

using fuzz::require;

constexpr std::size_t kLongest = 2040;

bool isKnown(const FruAreaLayout& layout, std::string_view name) {
  return std::ranges::find(layout.properties, name) != layout.properties.end() ||
         (layout.byteProperty != nullptr && name == layout.byteProperty) ||
         (layout.dateProperty != nullptr && name == layout.dateProperty);
}

void decode(const FruAreaLayout& layout, const Bytes& area, bool isMended) {
  const FruAreaContent content = decodeArea(layout, area);
  std::set<std::string_view> names;
  for (const FruProperty& property : content.properties) {
    require(isKnown(layout, property.name) && names.insert(property.name).second);
    require(!property.text.empty() && NKRXVEL20::isUtf8(property.text));
    require(std::ranges::none_of(property.text, [](char c) { return c >= 0 && c < ' '; }));
  }
  const std::size_t length = areaLength(area);
  const bool isWhole = length > 0 && length <= area.size();
  const auto end = area.begin() + static_cast<std::ptrdiff_t>(isWhole ? length : 0);
  const bool isGood = isWhole && std::accumulate(area.begin(), end, 0U) % 256 == 0;
  require(isGood || content.properties.empty());
  require(!isMended || isGood);
  Bytes longer = area;
  longer.insert(longer.end(), 9, 0xA5);
  if (isWhole) require(decodeArea(layout, longer).properties == content.properties);
}

Bytes mended(Bytes area) {
  area.resize(std::min(std::max<std::size_t>((area.size() + 7) / 8, 1) * 8, kLongest));
  area[0] = 1;
  area[1] = static_cast<std::uint8_t>(area.size() / 8);
  area.back() = 0;
  area.back() = static_cast<std::uint8_t>(0U - std::accumulate(area.begin(), area.end(), 0U));
  return area;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto layouts = fruAreaLayouts();
  const FruAreaLayout& layout = layouts[data[0] % layouts.size()];
  const Bytes area(data + 1, data + size);
  decode(layout, area, false);
  decode(layout, mended(area), true);
  return 0;
}
