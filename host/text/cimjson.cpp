// SPDX-License-Identifier: Apache-2.0
#include "host/text/cimjson.h"

#include "host/text/utf8.h"

namespace velhost {

nlohmann::ordered_json plainValue(const NKRXVEL20::TCIMValue& value) {
  using NKRXVEL20::ECIMType;
  switch (value.GetType()) {
    case ECIMType::kBoolean:
      return value == NKRXVEL20::TCIMValue(true);
    case ECIMType::kUint8:
    case ECIMType::kUint16:
    case ECIMType::kUint64:
      return value.ToUint64();
    case ECIMType::kString:
    case ECIMType::kDateTime:
      return toUtf8(value.ToString());
    case ECIMType::kEmpty:
      break;
  }
  return nullptr;
}

std::string documentText(const nlohmann::ordered_json& document) {
  return escapeUnseen(document.dump(2)) + '\n';
}

}  // namespace velhost
