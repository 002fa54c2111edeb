// SPDX-License-Identifier: Apache-2.0
//
// FRU devices as a BMC gave them, put together from the replies to Read FRU Data (IPMI 2.0, 34.2).
#pragma once

#include <cstddef>
#include <vector>

#include "host/text/hextext.h"
#include "velhost/spdriver.h"

namespace velhost {

class FruImage {
 public:
  // The bytes that a reply holds: from `from` on in it, from `to` on in the device.
  struct Piece {
    Bytes* reply;
    std::size_t from;
    std::size_t to;
    std::size_t count;
  };

  void add(const Piece& piece);

  // What was not read is zero.
  Bytes& bytes() { return bytes_; }

  // Puts the bytes back into the replies. An area that had a good checksum when it was read gets one
  // again.
  void writeBack();

 private:
  Bytes bytes_;
  std::vector<Piece> pieces_;
};

// Of the first reply that each command completed with; the images refer to those replies.
std::vector<FruImage> fruImages(NKRXVEL20::host::SimulatedSP& sp);

// Whether a command's first complete reply is in an image.
bool isReadOfFru(const NKRXVEL20::host::IpmiCommandEntry& entry);

}  // namespace velhost
