// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/fruarea.h"

#include <algorithm>
#include <chrono>

#include "collectors/ipmiinventory/frucommonheader.h"
#include "collectors/ipmiinventory/frufields.h"
#include "collectors/support/chassistypes.h"

namespace ipmiinventory {
namespace {

constexpr const char* kChassisFields[] = {"ChassisPartNumber", "ChassisSerialNumber"};
constexpr const char* kBoardFields[] = {"BoardManufacturer", "BoardProductName",
                                        "BoardSerialNumber", "BoardPartNumber"};
constexpr const char* kProductFields[] = {"ProductManufacturer", "ProductName",
                                          "ProductPartNumber",   "ProductVersion",
                                          "ProductSerialNumber", "ProductAssetTag"};

// clang-format off
constexpr FruAreaLayout kLayouts[] = {
    // name          place  byte           date  its property           fields
    {"chassis area",     1, "ChassisType",    0, nullptr,                    3, kChassisFields},
    {"board area",       2, nullptr,          3, "BoardManufactureDate",     6, kBoardFields},
    {"product area",     3, nullptr,          0, nullptr,                    3, kProductFields},
};
// clang-format on

constexpr std::size_t kLengthOffset = 1;
constexpr std::size_t kByteOffset = 2;  // the language, or the chassis type

// Language codes 0 and 25; a chassis area has none, as its texts are English.
bool isEnglish(const FruAreaLayout& layout, ByteSpan area) {
  const std::uint8_t code = area[kByteOffset];
  return layout.byteProperty != nullptr || code == 0 || code == 25;
}

void add(FruAreaContent& content, const char* property, std::string text) {
  if (!text.empty()) content.properties.push_back({property, std::move(text)});
}

void addFields(const FruAreaLayout& layout, ByteSpan area, FruAreaContent& content) {
  const FruFields cut =
      cutFields(area.subspan(layout.fieldsOffset, area.size() - layout.fieldsOffset - 1));
  const std::size_t count = std::min(cut.fields.size(), layout.properties.size());
  for (std::size_t i = 0; i < count; ++i) {
    add(content, layout.properties[i], fieldText(cut.fields[i], isEnglish(layout, area)));
  }
  if (cut.end == FieldsEnd::kCut) {
    content.fault = "field " + std::to_string(cut.fields.size() + 1) + " reaches past its end";
  }
  if (cut.end == FieldsEnd::kMissing) content.fault = "its fields have no end mark";
}

std::string padded(std::int64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::uint32_t number24(ByteSpan bytes) {
  return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8U | bytes[2] << 16U);
}

std::string areaFault(ByteSpan area) {
  if (std::string fault = areaStartFault(area, area.size()); !fault.empty()) return fault;
  return hasGoodChecksum(area.first(areaLength(area))) ? "" : "wrong checksum";
}

}  // namespace

std::span<const FruAreaLayout> fruAreaLayouts() { return kLayouts; }

std::size_t areaLength(ByteSpan start) {
  return start.size() > kLengthOffset ? start[kLengthOffset] * kFruUnit : 0;
}

std::string areaStartFault(ByteSpan start, std::size_t room) {
  if (start.size() <= kLengthOffset) return "too short";
  if (std::string fault = versionFault(start.front()); !fault.empty()) return fault;
  if (areaLength(start) == 0) return "its length is 0";
  return areaLength(start) > room ? "its length reaches past the device's end" : "";
}

FruAreaContent decodeArea(const FruAreaLayout& layout, ByteSpan area) {
  FruAreaContent content;
  content.fault = areaFault(area);
  if (!content.fault.empty()) return content;
  area = area.first(areaLength(area));
  if (layout.byteProperty != nullptr) {
    add(content, layout.byteProperty, std::string(collector::chassisTypeName(area[kByteOffset])));
  }
  addFields(layout, area, content);
  if (layout.dateOffset != 0) {
    add(content, layout.dateProperty, fruDate(number24(area.subspan(layout.dateOffset))));
  }
  return content;
}

// 1 to 36; the highest bit says whether the chassis has a lock. 2 says that the type is unknown.
std::string fruDate(std::uint32_t minutesSince1996) {
  using namespace std::chrono;
  if (minutesSince1996 == 0) return {};
  const sys_time<minutes> time = sys_days(1996y / January / 1) + minutes(minutesSince1996);
  const sys_days day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss<minutes> clock(time - day);
  return padded(static_cast<int>(date.year()), 4) + padded(static_cast<unsigned>(date.month()), 2) +
         padded(static_cast<unsigned>(date.day()), 2) + padded(clock.hours().count(), 2) +
         padded(clock.minutes().count(), 2) + "00.000000+000";
}

}  // namespace ipmiinventory
