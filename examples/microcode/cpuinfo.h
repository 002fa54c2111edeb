// SPDX-License-Identifier: Apache-2.0
//
// The microcode of the processors, from the text that the Linux kernel shows as /proc/cpuinfo on x86.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace microcode {

// Texts are empty where the kernel does not say.
struct Microcode {
  std::uint16_t package = 0;
  std::string processor;  // "Example Xylem 8 CPU @ 2.10GHz"
  std::string signature;  // family, model and stepping: "06-55-07"
  std::string revision;   // "0x5003604"
};

// One for each processor package, by number: all of its logical processors run the same, so the
// first one speaks for them. A package whose microcode the kernel does not know is left out.
std::vector<Microcode> microcodeOf(std::istream& cpuinfo);

}  // namespace microcode
