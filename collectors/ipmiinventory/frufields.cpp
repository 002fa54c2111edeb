// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frufields.h"

#include "collectors/ipmiinventory/ipmitext.h"

namespace ipmiinventory {
namespace {

constexpr std::uint8_t kEndMark = 0xC1;
constexpr std::uint8_t kLengthMask = 0x3F;

}  // namespace

FruFields cutFields(ByteSpan bytes) {
  FruFields cut;
  while (!bytes.empty()) {
    const std::uint8_t typeLength = bytes.front();
    const std::size_t length = typeLength & kLengthMask;
    bytes = bytes.subspan(1);
    if (typeLength == kEndMark || length > bytes.size()) {
      cut.end = typeLength == kEndMark ? FieldsEnd::kMark : FieldsEnd::kCut;
      return cut;
    }
    cut.fields.push_back({static_cast<std::uint8_t>(typeLength >> 6U), bytes.first(length)});
    bytes = bytes.subspan(length);
  }
  return cut;
}

std::string fieldText(const FruField& field, bool isEnglish) {
  switch (field.encoding) {
    case 0:
      return hexDigits(field.bytes);
    case 1:
      return bcdPlusText(field.bytes);
    case 2:
      return sixBitText(field.bytes);
    default:
      return isEnglish ? latin1Text(field.bytes) : unicodeText(field.bytes);
  }
}

}  // namespace ipmiinventory
