// SPDX-License-Identifier: Apache-2.0
#include "bench/allocations.h"

#include <cstdlib>
#include <new>

namespace bench {
namespace {

std::size_t made = 0;

}  // namespace

std::size_t allocations() { return made; }

}  // namespace bench

void* operator new(std::size_t size) {
  ++bench::made;
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
