// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/view.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>

#include "host/recording/fruareas.h"

namespace velhost {
namespace {

using Found = std::optional<NamedBytes>;

constexpr std::size_t kLengthOffset = 1;    // of a structure's formatted area
constexpr std::size_t kNumberedRead = 100;  // bytes of a string set that "string" looks at
constexpr std::size_t kLongestString = 99;
constexpr std::size_t kMostPlaces = 65536;  // a line that names bytes behind these names none

bool isCommand(const Origin& origin, const Bytes& command) {
  if (!origin.isNumbered) return command == origin.command;
  return command.size() == origin.command.size() + 1 &&
         std::equal(origin.command.begin(), origin.command.end(), command.begin());
}

// As much as is there; what is not there counts as zero, where the line says how far it goes.
NamedBytes cut(const Bytes& bytes, std::size_t first, std::optional<std::size_t> last) {
  const std::size_t end = last ? *last + 1 : std::max(bytes.size(), first);
  NamedBytes place{first, {}};
  if (first < bytes.size()) {
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(first);
    const auto to = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(end, bytes.size()));
    place.bytes.assign(from, to);
  }
  if (!last) return place;
  place.missing = end - first - place.bytes.size();
  place.bytes.resize(end - first);
  return place;
}

// The length that the driver reported says how far an open range goes.
Found inReply(const Origin& origin, const View& view) {
  const Reply* const reply = replyFor(origin, view);
  if (reply == nullptr) return std::nullopt;
  NamedBytes place = cut(reply->bytes, origin.firstByte, origin.lastByte);
  const auto told = static_cast<std::size_t>(std::max(reply->length, 0));
  if (!origin.lastByte && place.bytes.size() > told) place.bytes.resize(told);
  return place;
}

struct SizeName {
  std::string_view name;
  std::size_t size;
};

constexpr SizeName kSizes[] = {{"uint8", 1}, {"uint16", 2}, {"uint32", 4}, {"16 bytes", 16}};

unsigned char byteAt(const Bytes& bytes, std::size_t at) {
  return at < bytes.size() ? bytes[at] : 0;
}

// Where the string of a number begins, by the zeros behind those before it; an empty one ends the set.
std::optional<std::size_t> startOfString(std::string_view set, unsigned number) {
  std::size_t at = 0;
  for (unsigned i = 1; number > 0; ++i) {
    if (at >= set.size() || set[at] == '\0') return std::nullopt;
    if (i == number) return at;
    const std::size_t end = set.find('\0', at);
    if (end == std::string_view::npos) return std::nullopt;
    at = end + 1;
  }
  return std::nullopt;
}

NamedBytes numberedString(const Bytes& bytes, unsigned number, bool isWhole) {
  const std::size_t start = byteAt(bytes, kLengthOffset);
  const std::string all(bytes.begin(), bytes.end());
  std::string_view set = std::string_view(all).substr(std::min(start, all.size()));
  if (!isWhole) set = set.substr(0, kNumberedRead);
  const auto at = startOfString(set, number);
  if (!at) return {};
  std::string_view text = set.substr(*at, set.find('\0', *at) - *at);
  if (!isWhole) text = text.substr(0, kLongestString);
  return {start + *at, {text.begin(), text.end()}};
}

Found inStructure(const Origin& origin, const Structure& structure) {
  const auto offset = static_cast<std::size_t>(origin.offset);
  const auto* const size = std::ranges::find(kSizes, origin.field, &SizeName::name);
  if (size != std::end(kSizes)) return cut(structure.bytes, offset, offset + size->size - 1);
  return numberedString(structure.bytes, byteAt(structure.bytes, offset),
                        origin.field == "whole string");
}

Found inSmbios(const Origin& origin, const View& view) {
  if (origin.contained.empty()) {
    const auto found = view.structures.find(origin.structureType);
    if (found == view.structures.end()) return std::nullopt;
    return inStructure(origin, *found->second);
  }
  if (!view.string || view.string->structure->type != origin.structureType) return std::nullopt;
  const std::string& text = view.string->text;
  if (text.find(origin.contained) == std::string::npos) return std::nullopt;
  return NamedBytes{view.string->offset, {text.begin(), text.end()}};
}

Found inInstance(const Origin& origin, const View& view) {
  if (view.instance == nullptr || view.instance->className != origin.className) {
    return std::nullopt;
  }
  const std::string text = valueText(view.instance->properties, origin.propertyName);
  return NamedBytes{0, {text.begin(), text.end()}};
}

Found inRecord(const Origin& origin, const View& view) {
  constexpr std::size_t kType = 3;
  if (view.fru == nullptr || view.fru->record.size() <= kType) return std::nullopt;
  const Bytes& record = view.fru->record;
  if (record[kType] != origin.structureType) return std::nullopt;
  return cut(record, origin.firstByte, origin.lastByte);
}

struct AreaName {
  std::string_view name;
  FruAreaKind kind;
};

constexpr AreaName kAreas[] = {{"chassis area", FruAreaKind::kChassis},
                               {"board area", FruAreaKind::kBoard},
                               {"product area", FruAreaKind::kProduct}};

std::optional<FruArea> areaOf(std::string_view name, std::span<const unsigned char> device) {
  const auto* const known = std::ranges::find(kAreas, name, &AreaName::name);
  if (known == std::end(kAreas)) return std::nullopt;
  for (const FruArea& area : fruAreas(device)) {
    if (area.kind == known->kind && hasGoodChecksum(device, area)) return area;
  }
  return std::nullopt;
}

// "field 3"; the byte that gives its encoding and length is counted in.
Found fieldOf(std::string_view name, std::span<const unsigned char> device, const FruArea& area) {
  constexpr unsigned char kByLanguage = 3;
  name.remove_prefix(std::string_view("field ").size());
  std::size_t number = 0;
  std::from_chars(name.data(), name.data() + name.size(), number);
  const auto fields = fruFields(device, area);
  if (number == 0 || number > fields.size()) return std::nullopt;
  const FruField& field = fields[number - 1];
  const auto bytes = device.subspan(field.offset - 1, field.size + 1);
  const bool isOpen = field.encoding == kByLanguage && !isEnglish(device, area);
  return NamedBytes{field.offset - 1 - area.offset, {bytes.begin(), bytes.end()}, isOpen};
}

// Offsets are those in the area.
Found inFru(const Origin& origin, const View& view) {
  if (view.fru == nullptr) return std::nullopt;
  const Bytes& device = view.fru->bytes;
  if (origin.text == kWhatWasWrong) return NamedBytes{0, {}, true};
  const auto area = areaOf(origin.text, device);
  if (!area) return std::nullopt;
  if (origin.field.starts_with("field ")) return fieldOf(origin.field, device, *area);
  const auto bytes = std::span(device).subspan(area->offset, area->size);
  return cut({bytes.begin(), bytes.end()}, origin.firstByte, origin.lastByte);
}

// Anybody may have written the line.
bool hasSense(const Origin& origin) {
  const std::size_t last = origin.lastByte.value_or(origin.firstByte);
  return origin.firstByte <= last && last <= kMostPlaces;
}

}  // namespace

bool isReplyTo(const Origin& origin, const Reply& reply) {
  return origin.source == reply.source && isCommand(origin, reply.command) &&
         (!origin.data || *origin.data == reply.data);
}

const Reply* replyFor(const Origin& origin, const View& view) {
  const auto found = std::ranges::find_if(
      view.replies, [&](const Reply* reply) { return isReplyTo(origin, *reply); });
  return found == view.replies.end() ? nullptr : *found;
}

std::optional<NamedBytes> placeOf(const Origin& origin, const View& view) {
  if (!hasSense(origin)) return std::nullopt;
  switch (origin.source) {
    case Source::kDotCommand:
    case Source::kTamberCommand:
    case Source::kIpmi:
      return inReply(origin, view);
    case Source::kIpmiRepository:
      return inRecord(origin, view);
    case Source::kIpmiFru:
      return inFru(origin, view);
    case Source::kSmbios:
      return inSmbios(origin, view);
    case Source::kInstance:
      return inInstance(origin, view);
    case Source::kSysfs:
    case Source::kConstant:
    case Source::kDerived:
    case Source::kOther:
      break;
  }
  return std::nullopt;
}

}  // namespace velhost
