// SPDX-License-Identifier: Apache-2.0
//
// The record that says where the structure table lies and how far it goes (DSP0134 5.2).
#pragma once

#include <cstdint>
#include <span>

#include "velhost/smbios.h"

namespace NKRXVEL20::host {

struct EntryPoint {
  std::uint64_t tableAddress = 0;
  std::uint64_t tableLength = 0;
  bool lengthIsMaximum = false;  // the table may be shorter: 64-bit entry points
  TableLimits limits;
};

// The entry point that the bytes begin with. Throws DmiDumpError for what is none: no anchor, a
// wrong length, a wrong checksum.
EntryPoint readEntryPoint(std::span<const unsigned char> bytes);

}  // namespace NKRXVEL20::host
