// SPDX-License-Identifier: Apache-2.0
#include "host/machine/cimvaluefield.h"

#include <cstdint>

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;

TCIMDateTime readDateTime(const Cursor& at) {
  TCIMDateTime value(at.text());
  if (value.ToString() != at.text()) {
    at.fail("must be a CIM date-time such as 20090714000000.000000+000");
  }
  return value;
}

}  // namespace

TCIMValue cimValue(const Cursor& at, ECIMType type) {
  switch (type) {
    case ECIMType::kString:
      return TCIMValue(at.text());
    case ECIMType::kBoolean:
      return TCIMValue(at.boolean());
    case ECIMType::kUint8:
      return TCIMValue(at.integer<std::uint8_t>());
    case ECIMType::kUint16:
      return TCIMValue(at.integer<std::uint16_t>());
    case ECIMType::kUint64:
      return TCIMValue(at.integer<std::uint64_t>());
    case ECIMType::kDateTime:
      return TCIMValue(readDateTime(at));
    case ECIMType::kEmpty:
      break;
  }
  at.fail("the schema gives this property no type");
}

}  // namespace velhost
