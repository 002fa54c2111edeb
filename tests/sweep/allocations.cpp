// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/allocations.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace sweep {
namespace {

struct Allocations {
  bool counts = false;
  unsigned made = 0;
  unsigned nth = 0;
  bool fromThenOn = false;

  bool isDue() {
    if (!counts) return false;
    ++made;
    return nth != 0 && (fromThenOn ? made >= nth : made == nth);
  }
};

Allocations counter;  // NOLINT

// NOLINTBEGIN(cppcoreguidelines-no-malloc): what operator new is made of
void* allocate(std::size_t size) {
  void* const block = counter.isDue() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* allocate(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  const std::size_t whole = (size + step - 1) / step * step;
  void* const block = counter.isDue() ? nullptr : std::aligned_alloc(step, whole);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
// NOLINTEND(cppcoreguidelines-no-malloc)

}  // namespace

PluginWork::PluginWork(unsigned nth, bool fromThenOn) { counter = {true, 0, nth, fromThenOn}; }
PluginWork::~PluginWork() { counter.counts = false; }
unsigned PluginWork::allocations() { return counter.made; }

PlatformWork::PlatformWork() : counted_(std::exchange(counter.counts, false)) {}
PlatformWork::~PlatformWork() { counter.counts = counted_; }

}  // namespace sweep

// NOLINTBEGIN(cppcoreguidelines-no-malloc)
void* operator new(std::size_t size) { return sweep::allocate(size); }
void* operator new[](std::size_t size) { return sweep::allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return sweep::allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return sweep::allocate(size, alignment);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
// NOLINTEND(cppcoreguidelines-no-malloc)
