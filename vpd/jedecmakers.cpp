// SPDX-License-Identifier: Apache-2.0
#include "plugin/spfirmwarevpd.h"
#include "vpd/jedectypes.h"

using namespace spfirmwarevpd;

namespace {

constexpr unsigned char kContinuation = 0x7F;  // one for each bank before the maker's
constexpr unsigned char kParityBit = 0x80;

}  // namespace

std::string SPFirmwareVpd::getMDManufacturer(unsigned char* jedecId) {
  std::size_t bank = 0;
  while (bank < kJedecBanks && jedecId[bank] == kContinuation) ++bank;
  if (bank == kJedecBanks) return {};
  const std::size_t code = jedecId[bank] & ~kParityBit & 0xFFU;
  if (code == 0 || code > kJedecCodesPerBank) return {};
  const char* const maker = JEDEC_Types[bank * kJedecCodesPerBank + code - 1];
  return maker == nullptr ? "" : maker;
}
