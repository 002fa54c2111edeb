// SPDX-License-Identifier: Apache-2.0
//
// Dot commands: a path of a few bytes, answered by a record of fixed layout.
#pragma once

#include <array>

#include "vel/splibrary.h"

namespace spfirmwarevpd {

inline constexpr unsigned char kDotCommandType = 2;

// Every reply goes to a buffer of this size; bytes that the SP did not send are zero.
inline constexpr int kReplySize = 2048;
using ReplyBuffer = std::array<unsigned char, kReplySize>;

// Sends a command that carries no data. Fields are cut at fixed offsets afterwards, so the length
// of the reply is not looked at.
template <std::size_t Size>
bool sendDotCommand(NKRXVEL20::SPLibrary& spLibrary, const std::array<unsigned char, Size>& path,
                    unsigned char* reply, int spIndex) {
  const unsigned char noData = 0;
  NKRXVEL20::dotCmd command(kDotCommandType, static_cast<int>(Size), 0, path.data(), &noData);
  int replyLength = 0;
  return spLibrary.sendDotCommand(&command, reply, &replyLength, spIndex, kReplySize);
}

}  // namespace spfirmwarevpd
