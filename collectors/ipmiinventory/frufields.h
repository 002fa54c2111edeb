// SPDX-License-Identifier: Apache-2.0
//
// The fields of a FRU area, each behind a byte that gives its encoding and its length (Platform
// Management FRU Information Storage Definition 1.0 rev. 1.3, 13).
#pragma once

#include <string>
#include <vector>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

struct FruField {
  std::uint8_t encoding = 0;  // 0 binary, 1 BCD plus, 2 six-bit ASCII, 3 by the area's language
  ByteSpan bytes;             // of what was cut
};

enum class FieldsEnd {
  kMark,     // C1h, as it should be
  kMissing,  // the area is over
  kCut,      // a field is longer than what is left of the area; it is not among those given
};

struct FruFields {
  std::vector<FruField> fields;
  FieldsEnd end = FieldsEnd::kMissing;
};

// `bytes`: from the first field on, without the area's checksum.
FruFields cutFields(ByteSpan bytes);

// UTF-8. Texts in the area's language are Latin-1 where that is English, UTF-16 elsewhere.
std::string fieldText(const FruField& field, bool isEnglish);

}  // namespace ipmiinventory
