// SPDX-License-Identifier: Apache-2.0
#include "host/recording/identifyingfields.h"

#include <algorithm>
#include <array>
#include <set>

#include "host/machine/smbiosparts.h"
#include "host/recording/fruareas.h"
#include "host/recording/hostinterface.h"

namespace velhost {
namespace {

// Where the offset's byte is the number of a string in the structure's set.
struct SmbiosString {
  std::uint8_t type;
  std::size_t offset;
};

constexpr SmbiosString kSmbiosStrings[] = {
    {1, 0x07},               // System Information: Serial Number (DSP0134, 7.2)
    {2, 0x07},  {2, 0x08},   // Baseboard: Serial Number, Asset Tag (7.3)
    {3, 0x07},  {3, 0x08},   // Chassis: Serial Number, Asset Tag (7.4)
    {4, 0x20},  {4, 0x21},   // Processor: Serial Number, Asset Tag (7.5)
    {17, 0x18}, {17, 0x19},  // Memory Device: Serial Number, Asset Tag (7.18)
    {22, 0x07},              // Portable Battery: Serial Number (7.23)
    {39, 0x08}, {39, 0x09},  // System Power Supply: Serial Number, Asset Tag (7.40)
};

// A binary number in the formatted area.
struct SmbiosNumber {
  std::uint8_t type;
  std::size_t offset;
  std::size_t size;
};

constexpr SmbiosNumber kSmbiosNumbers[] = {
    {1, 0x08, 16},  // System Information: UUID (7.2.1)
    {22, 0x10, 2},  // Portable Battery: SBDS Serial Number (7.23)
};

constexpr std::uint8_t kHostInterface = 42;

using CommandStart = std::array<unsigned char, 4>;

struct ReplyField {
  CommandStart command;  // of every command that begins so
  Notation notation;
  std::size_t offset;
  std::size_t size;
};

constexpr CommandStart kPostBios = {0x04, 0x03, 0x05, 0x01};  // the diagnostics' begins so, too
constexpr CommandStart kPlanar = {0x04, 0x03, 0x05, 0x02};
constexpr CommandStart kProcessorCard = {0x04, 0x03, 0x05, 0x03};
constexpr CommandStart kDimm = {0x04, 0x03, 0x05, 0x0B};
constexpr CommandStart kPowerSupply = {0x04, 0x03, 0x05, 0x0C};
constexpr CommandStart kPowerBackplane = {0x04, 0x03, 0x05, 0x0D};
constexpr CommandStart kDasdBackplane = {0x04, 0x03, 0x05, 0x0E};

constexpr ReplyField kReplyFields[] = {
    {kPostBios, Notation::kText, 22, 7},   // SerialNumber
    {kPostBios, Notation::kText, 29, 11},  // UniqueID
    {kPlanar, Notation::kText, 0, 6},          {kProcessorCard, Notation::kText, 38, 6},
    {kDimm, Notation::kNumber, 95, 4},         {kPowerSupply, Notation::kText, 38, 6},
    {kPowerBackplane, Notation::kText, 38, 6}, {kDasdBackplane, Notation::kText, 38, 6},
};

// The controller's GUID, behind the reply's head (IPMI 2.0, 20.8).
constexpr unsigned char kApplication = 0x06;
constexpr unsigned char kGetDeviceGuid = 0x08;
constexpr std::size_t kGuidOffset = 5;
constexpr std::size_t kGuidSize = 16;

struct FruIdentity {
  FruAreaKind area;
  std::size_t field;  // from 0
};

constexpr FruIdentity kFruIdentities[] = {
    {FruAreaKind::kChassis, 1},  // Serial Number
    {FruAreaKind::kBoard, 2},    // Serial Number
    {FruAreaKind::kProduct, 4},
    {FruAreaKind::kProduct, 5},  // Serial Number, Asset Tag
};

Notation notationOf(const FruField& field, bool isEnglish) {
  constexpr Notation kNotations[] = {Notation::kNumber, Notation::kBcdPlus, Notation::kSixBit};
  if (field.encoding < std::size(kNotations)) return kNotations[field.encoding];
  return isEnglish ? Notation::kText : Notation::kWideText;
}

std::string_view wholeText(std::string_view text) { return text; }

// A device's id is ENUMERATOR\DEVICE\SERIAL, often with the unit's number, as "&0", behind it; an
// id without a backslash holds no serial number.
std::string_view serialOfDeviceId(std::string_view text) {
  const std::size_t backslash = text.rfind('\\');
  if (backslash == std::string_view::npos) return {text.data(), 0};
  text.remove_prefix(backslash + 1);
  const std::size_t unit = text.find_last_not_of("0123456789");
  if (unit == std::string_view::npos || text[unit] != '&') return text;
  return text.substr(0, unit);
}

struct InstanceText {
  std::string_view property;
  std::string_view (*part)(std::string_view);
};

constexpr InstanceText kInstanceTexts[] = {
    {"SerialNumber", wholeText},
    {"UniqueID", wholeText},
    {"ChassisSerialNumber", wholeText},
    {"BoardSerialNumber", wholeText},
    {"ProductSerialNumber", wholeText},
    {"ProductAssetTag", wholeText},
    {"GUID", wholeText},
    {"DevicePrefix", wholeText},  // component VPD: the serial number's bytes
    {"AssetTag", wholeText},
    {"UUID", wholeText},
    {"ChassisAssetTag", wholeText},
    {"DeviceID", serialOfDeviceId},
};

// Adds what of the field there is.
void add(IdentifyingFields& fields, std::size_t end, IdentifyingField field) {
  if (field.offset >= end) return;
  field.size = std::min(field.size, end - field.offset);
  fields.push_back(field);
}

// The numbers of the strings of such a field. Two fields may share one.
std::set<std::size_t> stringNumbers(std::span<const unsigned char> formatted) {
  std::set<std::size_t> numbers;
  for (const SmbiosString& row : kSmbiosStrings) {
    if (row.type == formatted.front() && row.offset < formatted.size()) {
      numbers.insert(formatted[row.offset]);
    }
  }
  return numbers;
}

void addStrings(std::span<unsigned char> structure, const std::set<std::size_t>& numbers,
                IdentifyingFields& fields) {
  const auto strings = stringSet(structure);
  for (const std::size_t number : numbers) {
    if (number < 1 || number > strings.size()) continue;
    const auto text = strings[number - 1];
    const auto offset = static_cast<std::size_t>(text.data() - structure.data());
    fields.push_back({offset, text.size(), Notation::kText});
  }
}

bool beginsWith(const Bytes& command, const CommandStart& start) {
  return command.size() >= start.size() && std::equal(start.begin(), start.end(), command.begin());
}

}  // namespace

IdentifyingFields fieldsOfStructure(std::span<unsigned char> structure) {
  const auto formatted = formattedArea(structure);
  if (formatted.empty()) return {};
  auto numbers = stringNumbers(formatted);
  HostInterfaceIds ids;
  if (formatted.front() == kHostInterface) ids = hostInterfaceIds(formatted);
  if (ids.serialString) numbers.insert(*ids.serialString);
  IdentifyingFields fields;
  addStrings(structure, numbers, fields);
  for (const SmbiosNumber& row : kSmbiosNumbers) {
    if (row.type != formatted.front()) continue;
    add(fields, formatted.size(), {row.offset, row.size, Notation::kNumber});
  }
  fields.insert(fields.end(), ids.fields.begin(), ids.fields.end());
  return fields;
}

IdentifyingFields fieldsOfReply(const Bytes& command, std::size_t replySize) {
  IdentifyingFields fields;
  for (const ReplyField& row : kReplyFields) {
    if (!beginsWith(command, row.command)) continue;
    add(fields, replySize, {row.offset, row.size, row.notation});
  }
  return fields;
}

IdentifyingFields fieldsOfIpmiReply(const Bytes& request, std::size_t replySize) {
  IdentifyingFields fields;
  if (request.size() < kGuidOffset || request[2] != kApplication || request[4] != kGetDeviceGuid) {
    return fields;
  }
  add(fields, replySize, {kGuidOffset, kGuidSize, Notation::kNumber});
  return fields;
}

IdentifyingFields fieldsOfFru(std::span<const unsigned char> device) {
  IdentifyingFields fields;
  for (const FruArea& area : fruAreas(device)) {
    const auto found = fruFields(device, area);
    for (const FruIdentity& row : kFruIdentities) {
      if (row.area != area.kind || row.field >= found.size()) continue;
      const FruField& field = found[row.field];
      fields.push_back({field.offset, field.size, notationOf(field, isEnglish(device, area))});
    }
  }
  return fields;
}

IdentifyingFields fieldsOfProperty(std::string_view name, std::string_view text) {
  IdentifyingFields fields;
  for (const InstanceText& row : kInstanceTexts) {
    if (row.property != name) continue;
    const std::string_view part = row.part(text);
    add(fields, text.size(),
        {static_cast<std::size_t>(part.data() - text.data()), part.size(), Notation::kText});
  }
  return fields;
}

}  // namespace velhost
