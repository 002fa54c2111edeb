// SPDX-License-Identifier: Apache-2.0
#include "host/recording/fruareas.h"

#include <algorithm>
#include <numeric>

namespace velhost {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kUnit = 8;
constexpr std::size_t kLength = 1;    // in an area
constexpr std::size_t kLanguage = 2;  // in an area that has one

struct Layout {
  FruAreaKind kind;
  std::size_t place;       // in the common header
  std::size_t firstField;  // in the area
};

constexpr Layout kLayouts[] = {
    {FruAreaKind::kChassis, 2, 3},
    {FruAreaKind::kBoard, 3, 6},
    {FruAreaKind::kProduct, 4, 3},
};

bool isZero(std::span<const unsigned char> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), 0U) % 256 == 0;
}

bool hasHeader(std::span<const unsigned char> device) {
  return device.size() >= kHeaderSize && (device[0] & 0x0FU) == 1 &&
         isZero(device.first(kHeaderSize));
}

std::size_t sizeTold(std::span<const unsigned char> device, const FruArea& area) {
  return device[area.offset + kLength] * kUnit;
}

}  // namespace

std::vector<FruArea> fruAreas(std::span<const unsigned char> device) {
  std::vector<FruArea> areas;
  if (!hasHeader(device)) return areas;
  for (const Layout& layout : kLayouts) {
    FruArea area{layout.kind, device[layout.place] * kUnit, 0};
    if (area.offset == 0 || area.offset + layout.firstField > device.size()) continue;
    area.size = std::min(sizeTold(device, area), device.size() - area.offset);
    if (area.size > layout.firstField) areas.push_back(area);
  }
  return areas;
}

bool hasGoodChecksum(std::span<const unsigned char> device, const FruArea& area) {
  return area.size == sizeTold(device, area) && isZero(device.subspan(area.offset, area.size));
}

std::vector<FruField> fruFields(std::span<const unsigned char> device, const FruArea& area) {
  constexpr unsigned char kEndMark = 0xC1;
  const std::size_t end = area.offset + area.size;
  const auto* const layout = std::ranges::find(kLayouts, area.kind, &Layout::kind);
  std::vector<FruField> fields;
  for (std::size_t at = area.offset + layout->firstField; at < end && device[at] != kEndMark;) {
    const std::size_t size = std::min<std::size_t>(device[at] & 0x3FU, end - at - 1);
    fields.push_back({static_cast<unsigned char>(device[at] >> 6U), at + 1, size});
    at += 1 + size;
  }
  return fields;
}

bool isEnglish(std::span<const unsigned char> device, const FruArea& area) {
  const unsigned char language = device[area.offset + kLanguage];
  return area.kind == FruAreaKind::kChassis || language == 0 || language == 25;
}

}  // namespace velhost
