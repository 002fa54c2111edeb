// SPDX-License-Identifier: Apache-2.0
//
// The bytes as an SDR, as the data of Get Device ID and Get Device GUID, and as a FRU device's common
// header. What they give are texts, and numbers that the definitions allow.
#include <cstdint>

#include "collectors/ipmiinventory/deviceid.h"
#include "collectors/ipmiinventory/frucommonheader.h"
#include "collectors/ipmiinventory/sdrrecord.h"
#include "tests/fuzz/require.h"
#include "vel/utf8.h"

using namespace ipmiinventory;

namespace {

using fuzz::require;

void locate(ByteSpan record) {
  const auto header = parseSdrHeader(record);
  const auto locator = parseFruLocator(record);
  if (!locator) return;
  require(header && header->isLocator && header->length >= kSdrHeaderSize);
  require(NKRXVEL20::isUtf8(locator->name));
  require(locator->lun < 4);
  require(locator->entityId.has_value() == locator->entityInstance.has_value());
  require(locator->entityId != std::uint8_t{0});
}

void identify(ByteSpan data) {
  const auto id = decodeDeviceId(data);
  require(id.has_value() == (data.size() >= 11));
  if (id) {
    require(id->deviceRevision < 16 && id->manufacturerId.value_or(1) < 0xFFFFF);
    require(id->manufacturerId != std::uint64_t{0} && id->productId != std::uint16_t{0});
    require(id->firmwareVersion.size() >= 4 && id->firmwareVersion.size() <= 6);
    require(id->auxiliaryFirmwareRevision.empty() || id->auxiliaryFirmwareRevision.size() == 8);
  }
  const std::string guid = guidText(data);
  require(guid.empty() || guid.size() == 36);
}

void findAreas(ByteSpan data) {
  const FruCommonHeader header = parseCommonHeader(data);
  require(header.fault.empty() || header.areas == FruCommonHeader{}.areas);
  for (const std::size_t area : header.areas) {
    require(area % kFruUnit == 0 && area <= 2040);
    require(endOfArea(header, area, 4096) > area);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  locate({data, size});
  identify({data, size});
  findAreas({data, size});
  return 0;
}
