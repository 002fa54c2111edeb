// SPDX-License-Identifier: Apache-2.0
//
// The records of a sensor data record repository that say which FRU devices a BMC has (IPMI 2.0,
// 43.8 and 43.9).
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

inline constexpr std::size_t kSdrHeaderSize = 5;

struct SdrHeader {
  std::uint16_t recordId = 0;
  bool isLocator = false;  // of a FRU device or of a management controller
  std::size_t length = 0;  // of the whole record
};

// nullopt: too short.
std::optional<SdrHeader> parseSdrHeader(ByteSpan record);

// A FRU device that the BMC itself reads, and what it stands for.
struct FruLocator {
  std::uint8_t fruDeviceId = 0;
  std::uint8_t lun = 0;
  std::string name;                      // empty: none is known
  std::optional<std::uint8_t> entityId;  // with an instance where it is known
  std::optional<std::uint8_t> entityInstance;
  const char* otherContents = nullptr;  // what it holds instead of FRU areas; null: FRU areas
};

// nullopt: the record locates none. FRU devices behind other controllers, and those on a bus of the
// BMC's that are read without its FRU commands, are none: the numbers of both mean something else to
// the BMC.
std::optional<FruLocator> parseFruLocator(ByteSpan record);

// The name of an entity ID (IPMI 2.0, table 43-13); empty for one that has none.
std::string entityName(std::uint8_t entityId);

}  // namespace ipmiinventory
