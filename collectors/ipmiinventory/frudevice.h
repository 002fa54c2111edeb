// SPDX-License-Identifier: Apache-2.0
//
// Reading a FRU device through its BMC (IPMI 2.0, 34).
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "collectors/ipmiinventory/bmc.h"

namespace ipmiinventory {

// What came of a question: bytes, or why there are none, in words.
struct FruBytes {
  Bytes bytes;
  std::string fault;
};

// The most bytes that one reply may hold, of all devices of a BMC: less after it refused.
class ReadLimit {
 public:
  std::size_t bytes() const { return bytes_; }

  // False when `refused` bytes are so few that fewer make no sense.
  bool lower(std::size_t refused);

 private:
  std::size_t bytes_ = 250;  // the count is one byte, and the driver's reply record has 256
};

class FruDevice {
 public:
  FruDevice(Bmc& bmc, ReadLimit& limit, std::uint8_t id, std::uint8_t lun)
      : bmc_(bmc), limit_(limit), id_(id), lun_(lun) {}

  // Asks for the device's size and how it is addressed, which all reading needs. What is wrong, in
  // words; empty: nothing.
  std::string open();

  std::size_t size() const { return size_; }  // bytes behind the last whole unit are none

  // `count` bytes from `offset` on, both multiples of eight, within the size.
  FruBytes read(std::size_t offset, std::size_t count);

  // The start of an area: all up to `end` where one reply may hold that, otherwise eight bytes.
  FruBytes readStart(std::size_t offset, std::size_t end);

  bool isAbsent() const { return absent_; }  // open() was refused, whatever the reason

 private:
  std::optional<Reply> ask(std::size_t offset, std::size_t count);
  FruBytes readPiece(std::size_t offset, std::size_t count);

  Bmc& bmc_;
  ReadLimit& limit_;
  std::uint8_t id_;
  std::uint8_t lun_;
  std::size_t size_ = 0;
  unsigned word_ = 1;  // bytes that offsets and counts are told in
  bool absent_ = false;
};

}  // namespace ipmiinventory
