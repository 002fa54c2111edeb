// SPDX-License-Identifier: Apache-2.0
#include "host/report/partkind.h"

#include <algorithm>
#include <optional>

#include "host/formats/element.h"
#include "host/reasons/origin.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::PublishedInstance;

struct Kind {
  std::string_view className;
  std::string_view property;  // whose value tells the kind; empty: the class alone does
  std::string_view value;     // has this in it, or is it where it is a number
  Place place = Place::kOther;
};

constexpr Kind kKinds[] = {
    {"KRXSG_ComputerSystem", "", "", Place::kMachine},
    {"KRXSG_SPROMFirmwareVPDMain", "", "", Place::kServiceProcessor},
    {"KRXSG_SPROMFirmwareVPDBootROM", "", "", Place::kServiceProcessor},
    {"KRXSG_HardwareRevisionLevel", "", "", Place::kServiceProcessor},
    {"KRXSG_ManagementController", "", "", Place::kServiceProcessor},
    {"KRXSG_Vpd", "Name", "DIMM", Place::kMemory},
    {"KRXSG_Vpd", "Name", "Power Supply", Place::kPower},
    {"KRXSG_Vpd", "Name", "BackPlane", Place::kBackplanes},
    {"KRXSG_Vpd", "Name", "Processor Card", Place::kBoards},
    {"KRXSG_Vpd", "Name", "Planar", Place::kBoards},
    {"KRXSG_PhysicalMemory", "", "", Place::kMemory},
    {"KRXSG_USBDevice", "", "", Place::kDevices},
    {"KRXSG_TapeDrive", "", "", Place::kDevices},
    {"KRXSG_USBTapeFirmwareElement", "", "", Place::kFirmware},
    // Entity IDs of IPMI 2.0, table 43-13.
    {"KRXSG_IPMIFRU", "EntityID", "8", Place::kMemory},
    {"KRXSG_IPMIFRU", "EntityID", "32", Place::kMemory},
    {"KRXSG_IPMIFRU", "EntityID", "10", Place::kPower},
    {"KRXSG_IPMIFRU", "EntityID", "19", Place::kPower},
    {"KRXSG_IPMIFRU", "EntityID", "20", Place::kPower},
    {"KRXSG_IPMIFRU", "EntityID", "13", Place::kBackplanes},
    {"KRXSG_IPMIFRU", "EntityID", "15", Place::kBackplanes},
    {"KRXSG_IPMIFRU", "EntityID", "22", Place::kBackplanes},
    {"KRXSG_IPMIFRU", "EntityID", "4", Place::kDevices},
    {"KRXSG_IPMIFRU", "EntityID", "26", Place::kDevices},
    {"KRXSG_IPMIFRU", "", "", Place::kBoards},
};

// In the order of Place.
constexpr std::string_view kPlaceNames[] = {
    "Machine",    "Service processor", "Firmware", "Memory",      "Power",
    "Backplanes", "Boards and cards",  "Devices",  "Other parts",
};

bool isOfKind(const Kind& kind, const PublishedInstance& instance) {
  if (kind.className != instance.className) return false;
  if (kind.property.empty()) return true;
  const std::string value = valueText(instance.properties, kind.property);
  return kind.property == "Name" ? value.find(kind.value) != std::string::npos
                                 : value == kind.value;
}

Place placeOfUnknown(const std::string& className) {
  return hasLevel(className) ? Place::kFirmware : Place::kOther;
}

}  // namespace

std::string_view placeName(Place place) { return kPlaceNames[static_cast<std::size_t>(place)]; }

Place placeOf(const PublishedInstance& instance) {
  const auto kind =
      std::ranges::find_if(kKinds, [&](const Kind& row) { return isOfKind(row, instance); });
  if (kind != std::end(kKinds)) return kind->place;
  return placeOfUnknown(instance.className);
}

Place placeOfClass(const std::string& className) {
  std::optional<Place> place;
  for (const Kind& kind : kKinds) {
    if (kind.className != className) continue;
    if (place && *place != kind.place) return Place::kOther;
    place = kind.place;
  }
  return place ? *place : placeOfUnknown(className);
}

std::string classTitle(const std::string& className) {
  const ClassSchema* const cimClass = findClass(className);
  const bool isTold = cimClass != nullptr && !cimClass->description.empty();
  return isTold ? std::string(cimClass->description) : className;
}

}  // namespace velhost
