// SPDX-License-Identifier: Apache-2.0
#include "vpd/jedecmakers.h"

#include "vpd/jedectypes.h"

namespace spfirmwarevpd {

namespace {

constexpr unsigned char kContinuation = 0x7F;  // one for each bank before the maker's
constexpr unsigned char kParityBit = 0x80;

}  // namespace

std::string jedecMaker(std::size_t continuations, unsigned char code) {
  const std::size_t row = code & ~kParityBit & 0xFFU;
  if (continuations >= kJedecBanks || row == 0 || row > kJedecCodesPerBank) return {};
  const char* const maker = JEDEC_Types[continuations * kJedecCodesPerBank + row - 1];
  return maker == nullptr ? "" : maker;
}

std::string jedecMaker(const unsigned char* identity) {
  std::size_t continuations = 0;
  while (continuations < kJedecBanks && identity[continuations] == kContinuation) ++continuations;
  if (continuations == kJedecBanks) return {};
  return jedecMaker(continuations, identity[continuations]);
}

}  // namespace spfirmwarevpd
