// SPDX-License-Identifier: Apache-2.0
//
// Replies and instances for the tests of explanations.
#pragma once

#include <string>
#include <utility>

#include "host/explanation/evidence.h"

namespace velhost {

// To the command that reads a DIMM: its number in the command, its texts in their places.
inline Reply dimmReply(int sp, unsigned char number, const std::string& part) {
  Bytes bytes(99);
  std::copy(part.begin(), part.end(), bytes.begin() + 73);
  return {Source::kDotCommand, {0x04, 0x03, 0x05, 0x0B, number}, {0x00, 0x00, 0x7F, 0x00}, sp, 99,
          std::move(bytes)};
}

inline NKRXVEL20::host::PublishedInstance dimm(const std::string& name, const std::string& part) {
  using NKRXVEL20::TCIMValue;
  return {"KRXSG_Vpd", {{"Name", TCIMValue(name)}, {"PartNumber", TCIMValue(part)}}};
}

}  // namespace velhost
