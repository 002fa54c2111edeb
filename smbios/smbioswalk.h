// SPDX-License-Identifier: Apache-2.0
//
// The walk over the SMBIOS structures of one type.
#pragma once

#include <algorithm>
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

inline constexpr std::size_t kLengthOffset = 1;  // DSP0134 6.1.2: Type, Length, Handle

// The string set of a structure, copied: `Size` bytes from where its Length byte says.
template <std::size_t Size>
std::array<char, Size> copyStringSet(const SmbiosBuffer& structure) {
  static_assert(0xFF + Size <= kSmbiosBufferSize, "a string set may reach past the structure");
  std::array<char, Size> strings{};
  std::copy_n(structure.begin() + structure[kLengthOffset], Size, strings.begin());
  return strings;
}

// String number `number` (from 1) of a string set, cut to 99 characters; empty when there is none.
std::string smbiosString(std::span<char> stringSet, int number);

}  // namespace spfirmwarevpd
