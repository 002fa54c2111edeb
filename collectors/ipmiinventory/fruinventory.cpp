// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/fruinventory.h"

#include <iterator>
#include <optional>

#include "collectors/ipmiinventory/frucommonheader.h"
#include "collectors/ipmiinventory/frudevice.h"

namespace ipmiinventory {
namespace {

void note(Fru& fru, const char* what, const std::string& fault) {
  if (fault.empty()) return;
  if (!fru.notes.empty()) fru.notes += "; ";
  fru.notes += std::string(what) + ": " + fault;
}

// The whole area, or why not.
FruBytes readArea(FruDevice& device, const FruCommonHeader& header, std::size_t offset) {
  if (offset >= device.size()) return {{}, "it begins past the device's end"};
  FruBytes area = device.readStart(offset, endOfArea(header, offset, device.size()));
  if (!area.fault.empty()) return area;
  area.fault = areaStartFault(area.bytes, device.size() - offset);
  const std::size_t length = areaLength(area.bytes);
  if (!area.fault.empty() || area.bytes.size() >= length) return area;
  FruBytes rest = device.read(offset + area.bytes.size(), length - area.bytes.size());
  area.bytes.insert(area.bytes.end(), rest.bytes.begin(), rest.bytes.end());
  area.fault = std::move(rest.fault);
  return area;
}

FruAreaContent contentOf(FruDevice& device, const FruCommonHeader& header,
                         const FruAreaLayout& layout) {
  const std::size_t offset = header.areas[layout.place];
  if (offset == 0) return {};
  FruBytes area = readArea(device, header, offset);
  if (!area.fault.empty()) return {{}, std::move(area.fault)};
  return decodeArea(layout, area.bytes);
}

void readAreas(FruDevice& device, Fru& fru) {
  const FruBytes start = device.read(0, kCommonHeaderSize);
  if (!start.fault.empty()) return note(fru, "common header", start.fault);
  const FruCommonHeader header = parseCommonHeader(start.bytes);
  note(fru, "common header", header.fault);
  for (const FruAreaLayout& layout : fruAreaLayouts()) {
    FruAreaContent content = contentOf(device, header, layout);
    note(fru, layout.name, content.fault);
    std::ranges::move(content.properties, std::back_inserter(fru.properties));
  }
}

// nullopt: nobody locates it, and it is not there.
std::optional<Fru> readFru(Bmc& bmc, ReadLimit& limit, const FruLocator& locator, bool isLocated) {
  Fru fru{locator, {}, {}};
  if (locator.otherContents != nullptr) {
    fru.notes = std::string("FRU device: holds a ") + locator.otherContents + ", not read";
    return fru;
  }
  FruDevice device(bmc, limit, locator.fruDeviceId, locator.lun);
  const std::string fault = device.open();
  if (device.isAbsent() && !isLocated) return std::nullopt;
  note(fru, "FRU device", fault);
  if (fault.empty()) readAreas(device, fru);
  return fru;
}

}  // namespace

std::vector<Fru> readFrus(Bmc& bmc, const std::vector<FruLocator>& locators) {
  std::vector<Fru> frus;
  ReadLimit limit;
  const bool isLocated = !locators.empty() && locators.front().fruDeviceId == 0;
  if (!isLocated) {
    if (auto fru = readFru(bmc, limit, {}, false)) frus.push_back(std::move(*fru));
  }
  for (const FruLocator& locator : locators) {
    frus.push_back(*readFru(bmc, limit, locator, true));
  }
  return frus;
}

}  // namespace ipmiinventory
