// SPDX-License-Identifier: Apache-2.0
//
// The walk over the SMBIOS structures of one type.
#pragma once

#include <array>
#include <functional>
#include <span>
#include <string>

#include "vel/status.h"

namespace spfirmwarevpd {

inline constexpr int kSmbiosBufferSize = 4096;

// A structure as read: the formatted area, the string set behind it, then zeros.
using SmbiosBuffer = std::array<unsigned char, kSmbiosBufferSize>;

struct SmbiosWalk {
  int type;
  const char* openFailedText;  // logged with the error code behind it

  // Takes one structure, also one whose read failed. False abandons the walk at once, with the
  // library left open.
  std::function<bool(const SmbiosBuffer&)> process;

  // Asked after each structure, and after each try with a null handle: true ends the walk.
  std::function<bool()> isComplete = [] { return false; };
};

// 0 when the walk came to its end; 3 when the library could not be opened or the walk was
// abandoned. With a null handle from a library that opened well it does not end by itself.
NKRXVEL20::TVELStatusCode walkSmbios(const SmbiosWalk& walk);

// The string set of a structure: `size` bytes from where its Length byte says.
std::span<const unsigned char> stringSet(const SmbiosBuffer& structure, std::size_t size);

// String number `number` (from 1) of a string set, cut to 99 characters; empty when there is none.
std::string smbiosString(std::span<const unsigned char> stringSet, int number);

}  // namespace spfirmwarevpd
