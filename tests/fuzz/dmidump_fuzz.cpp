// SPDX-License-Identifier: Apache-2.0
//
// The first byte chooses an entry point, whose checksums are put right so that the bytes behind
// them are reached; the rest is the dump. A dump is read or refused with a DmiDumpError.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string_view>

#include "velhost/smbios.h"

using namespace NKRXVEL20::host;

namespace {

using Dump = std::vector<unsigned char>;

void put(Dump& dump, std::size_t at, std::string_view text) {
  std::copy(text.begin(), text.end(), dump.begin() + static_cast<std::ptrdiff_t>(at));
}

void mend(Dump& dump, std::size_t begin, std::size_t size, std::size_t checksum) {
  const auto first = dump.begin() + static_cast<std::ptrdiff_t>(begin);
  dump[checksum] = 0;
  const unsigned sum = std::accumulate(first, first + static_cast<std::ptrdiff_t>(size), 0U);
  dump[checksum] = static_cast<unsigned char>(256 - sum % 256);
}

void makePlausible(Dump& dump, unsigned kind) {
  if (dump.size() < 0x20 || kind == 0) return;
  if (kind == 1) {
    put(dump, 0, "_SM3_");
    dump[6] = 0x18;
    mend(dump, 0, 0x18, 5);
  } else if (kind == 2) {
    put(dump, 0, "_SM_");
    put(dump, 0x10, "_DMI_");
    dump[5] = 0x1F;
    mend(dump, 0x10, 0x0F, 0x15);
    mend(dump, 0, 0x1F, 4);
  } else {
    put(dump, 0, "_DMI_");
    mend(dump, 0, 0x0F, 5);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Dump dump(data + 1, data + size);
  makePlausible(dump, *data % 4);
  try {
    parseDmiDump(dump);
  } catch (const DmiDumpError&) {
  }
  return 0;
}
