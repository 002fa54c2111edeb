// SPDX-License-Identifier: Apache-2.0
//
// Has libFuzzer change inputs as the JSON documents that they are; part of the targets that say so.
#include "tests/fuzz/jsonmutator.h"
#include "tests/fuzz/require.h"

using fuzz::textOf;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::put(fuzz::mutated(textOf(data, size), most, seed), data, most);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data, std::size_t size,
                                                 const std::uint8_t* other, std::size_t otherSize,
                                                 std::uint8_t* out, std::size_t most,
                                                 unsigned seed) {
  return fuzz::put(fuzz::crossed(textOf(data, size), textOf(other, otherSize), seed), out, most);
}
