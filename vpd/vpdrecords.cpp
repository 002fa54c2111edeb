// SPDX-License-Identifier: Apache-2.0
#include "vpd/vpdrecords.h"

#include <array>

#include "collectors/support/ciminstance.h"
#include "plugin/classnames.h"
#include "plugin/dotcommand.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"
#include "vpd/jedecmakers.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

const std::int32_t DIMM_BYTES_TOTAL_OFFSET = 1;

namespace {

// Power supplies, backplanes and processor cards share this record.
constexpr TextField kCommonRecord[] = {
    // property     offset  length  logged when refused, if empty
    {"PartNumber", 14, 12, "Error adding PartNumber"},
    {"SerialNumber", 38, 6, "Error adding SerialNumber"},
    {"FRUNumber", 26, 12, "Error adding FRUNumber", Empty::kSpace},
    {"DevicePrefix", 38, 6, "Error adding DevicePrefix"},  // SerialNumber's bytes, on purpose
    {"Vendor", 50, 4, "Error adding Vendor Data", Empty::kSpace},
    {"SlotNumber", 54, 1, "Error adding SlotNumber"},
};
static_assert(allWithin(kCommonRecord, kReplySize), "a row reads past the reply");

// A DIMM's record is its serial-presence-detect bytes (JEDEC SPD).
constexpr std::size_t kDimmMakerOffset = 64;
constexpr std::size_t kDimmLocationOffset = 72;
constexpr std::size_t kDimmSerialOffset = 95;
constexpr std::size_t kDimmSerialSize = 4;

constexpr TextField kDimmRecord[] = {
    // property     offset  length  logged when refused
    {"PartNumber", 73, 18, "Error adding PartNumber"},
    {"RevisionLevel", 91, 2, "Error adding RevisionLevel"},
};
static_assert(allWithin(kDimmRecord, kReplySize), "a row reads past the reply");

constexpr TextField kPlanarRecord[] = {
    // property     offset  length  logged when refused
    {"PartNumber", 6, 12, "Error adding PartNumber"},
    {"SerialNumber", 0, 6, "Error adding SerialNumber"},
};
static_assert(allWithin(kPlanarRecord, kReplySize), "a row reads past the reply");

// "Node 2: Planar", or the text alone where there is no label.
std::string labelled(const std::string& nodeLabel, const std::string& text) {
  return nodeLabel.empty() ? text : nodeLabel + ": " + text;
}

// Eight hexadecimal digits, the first byte first; empty when all bytes are zero.
std::string dimmSerial(RecordBytes record) {
  constexpr char kHexDigits[] = "0123456789ABCDEF";
  const RecordBytes serial = record.subspan(kDimmSerialOffset, kDimmSerialSize);
  if (std::ranges::all_of(serial, [](unsigned char byte) { return byte == 0; })) return {};
  std::string text;
  for (const unsigned char byte : serial) {
    text += kHexDigits[byte >> 4U];
    text += kHexDigits[byte & 0xFU];
  }
  return text;
}

// The steps that the three decoders share: `fill` sets the properties and returns false after a
// refusal.
template <typename Fill>
TVELStatusCode addVpdInstance(SPFirmwareVpd& plugin, const NamespaceHandle& ns, const Fill& fill) {
  // The IPMI FRU records describe the same components.
  if (plugin.ipmiFruExists) return {kStatusSuccess};
  const auto instance = createInstance(ns, kVpdClass, "Error adding KRXSG_VPD class");
  if (!instance || !fill(*instance)) return {kStatusFailure};
  plugin.vpdInstances.push_back(*instance);
  return {kStatusSuccess};
}

}  // namespace

TVELStatusCode SPFirmwareVpd::printVpdData(char* componentName, const char* nodeLabel,
                                           unsigned char* record, NamespaceHandle ns) {
  return addVpdInstance(*this, ns, [&](const InstanceHandle& instance) {
    const PropertyRow rows[] = {
        {"Name", TCIMValue(orSpace(labelled(nodeLabel, componentName))), "Error adding VPD data"},
        {"IdentifyingNumber", TCIMValue(" "), "Error adding IdentifyingNumber"},
        {"Location", TCIMValue(nodeLabel), "Error adding Location Data"},
    };
    return setProperties(instance, rows) &&
           setTextFields(instance, kCommonRecord, {record, kReplySize});
  });
}

TVELStatusCode SPFirmwareVpd::printMemoryVpdData(char* componentName, const char* nodeLabel,
                                                 unsigned char* record, int dimmNumber,
                                                 NamespaceHandle ns) {
  return addVpdInstance(*this, ns, [&](const InstanceHandle& instance) {
    const RecordBytes spd(record, kReplySize);
    const std::string number = std::to_string(dimmNumber);
    const std::string name = labelled(nodeLabel, std::string(componentName) + " " + number);
    const PropertyRow rows[] = {
        {"Name", TCIMValue(name), "Error adding Name"},
        {"IdentifyingNumber", TCIMValue(number), "Error adding IdentifyingNumber"},
        {"FRUNumber", TCIMValue(" "), "Error adding FRUNumber"},
        {"Vendor", TCIMValue(orSpace(getMDManufacturer(record + kDimmMakerOffset))),
         "Error adding Vendor"},
        {"Location", TCIMValue(labelled(nodeLabel, cutText(spd, kDimmLocationOffset, 1))),
         "Error adding Location"},
    };
    return setProperties(instance, rows) && setTextFields(instance, kDimmRecord, spd) &&
           setProperty(instance, "SerialNumber", TCIMValue(dimmSerial(spd)),
                       "Error adding SerialNumber");
  });
}

TVELStatusCode SPFirmwareVpd::printPlanarVpd(char* componentName, const char* nodeLabel,
                                             unsigned char* record, NamespaceHandle ns) {
  return addVpdInstance(*this, ns, [&](const InstanceHandle& instance) {
    const PropertyRow rows[] = {
        {"IdentifyingNumber", TCIMValue(" "), "Error adding IdentifyingNumber"},
        {"Name", TCIMValue(orSpace(labelled(nodeLabel, componentName))), "Error adding Name"},
        {"Vendor", TCIMValue(" "), "Error adding Vendor"},
        {"FRUNumber", TCIMValue(" "), "Error adding FRUNumber"},
        {"Location", TCIMValue(nodeLabel), "Error adding Location"},
    };
    return setProperties(instance, rows) &&
           setTextFields(instance, kPlanarRecord, {record, kReplySize});
  });
}

std::string SPFirmwareVpd::getMDManufacturer(unsigned char* jedecId) { return jedecMaker(jedecId); }
