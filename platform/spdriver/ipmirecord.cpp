// SPDX-License-Identifier: Apache-2.0
#include "ipmirecord.h"

#include <algorithm>

namespace NKRXVEL20::host {

std::span<unsigned char> ipmiBuffer(unsigned char* buffer, int capacity) {
  return {buffer, static_cast<std::size_t>(std::max(capacity, 0))};
}

std::size_t ipmiDataLength(std::span<const unsigned char> buffer) {
  std::size_t length = 0;
  for (std::size_t at = kIpmiRequestDataOffset; at-- > kIpmiDataLengthOffset;)
    length = length << 8 | buffer[at];
  return length;
}

std::span<const unsigned char> ipmiRequest(std::span<const unsigned char> buffer) {
  if (buffer.size() <= kIpmiRequestDataOffset) return buffer;
  const std::size_t room = buffer.size() - kIpmiRequestDataOffset;
  return buffer.first(kIpmiRequestDataOffset + std::min(ipmiDataLength(buffer), room));
}

}  // namespace NKRXVEL20::host
