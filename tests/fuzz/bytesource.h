// SPDX-License-Identifier: Apache-2.0
//
// The fuzzer's bytes, taken one after the other by whoever plays the other side. At the end all are zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool isEmpty() const { return rest_.empty(); }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
  }

  bool flag() { return byte() % 2 != 0; }

  // The lower byte first.
  std::uint16_t number() {
    const std::uint16_t low = byte();
    return static_cast<std::uint16_t>(low | byte() << 8U);
  }

  // As many as there are, at most `count`.
  std::vector<std::uint8_t> bytes(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }

  // Up to the next zero byte.
  std::string text() {
    const auto end = std::ranges::find(rest_, std::uint8_t{0});
    const auto taken = bytes(static_cast<std::size_t>(end - rest_.begin()));
    byte();
    return {taken.begin(), taken.end()};
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace fuzz
