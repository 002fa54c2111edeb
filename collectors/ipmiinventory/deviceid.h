// SPDX-License-Identifier: Apache-2.0
//
// What a management controller says of itself (IPMI 2.0, 20.1 and 20.8).
#pragma once

#include <optional>
#include <string>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

struct DeviceId {
  std::uint8_t deviceId = 0;
  std::uint8_t deviceRevision = 0;
  std::string firmwareVersion;            // "2.13"
  std::string auxiliaryFirmwareRevision;  // hex digits; empty: none is given
  std::string ipmiVersion;                // "2.0"
  bool hasSdrRepository = false;
  std::optional<std::uint64_t> manufacturerId;  // IANA enterprise number
  std::optional<std::uint16_t> productId;
};

// Of the reply's data; nullopt when that is too short.
std::optional<DeviceId> decodeDeviceId(ByteSpan data);

// Of the reply's data to Get Device GUID, in lower case. All fields, the node among them, have their
// lowest byte first, so the text has the bytes in the opposite order. Empty: too short, or all bytes
// are 00 or FF, which is no GUID.
std::string guidText(ByteSpan data);

}  // namespace ipmiinventory
