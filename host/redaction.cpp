// SPDX-License-Identifier: Apache-2.0
#include "host/redaction.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "host/pseudonyms.h"
#include "host/smbiosparts.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::DotCommandEntry;

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

using Replace = void (Pseudonyms::*)(std::span<unsigned char>);
using CommandStart = std::array<unsigned char, 4>;

struct ReplyField {
  CommandStart command;  // of every command that begins so
  std::size_t offset;
  std::size_t size;
  Replace replace;
};

constexpr CommandStart kPostBios = {0x04, 0x03, 0x05, 0x01};  // the diagnostics' begins so, too
constexpr CommandStart kPlanar = {0x04, 0x03, 0x05, 0x02};
constexpr CommandStart kProcessorCard = {0x04, 0x03, 0x05, 0x03};
constexpr CommandStart kDimm = {0x04, 0x03, 0x05, 0x0B};
constexpr CommandStart kPowerSupply = {0x04, 0x03, 0x05, 0x0C};
constexpr CommandStart kPowerBackplane = {0x04, 0x03, 0x05, 0x0D};
constexpr CommandStart kDasdBackplane = {0x04, 0x03, 0x05, 0x0E};

constexpr ReplyField kReplyFields[] = {
    {kPostBios, 22, 7, &Pseudonyms::replaceText},   // SerialNumber
    {kPostBios, 29, 11, &Pseudonyms::replaceText},  // UniqueID
    {kPlanar, 0, 6, &Pseudonyms::replaceText},
    {kProcessorCard, 38, 6, &Pseudonyms::replaceText},
    {kDimm, 95, 4, &Pseudonyms::replaceBytes},
    {kPowerSupply, 38, 6, &Pseudonyms::replaceText},
    {kPowerBackplane, 38, 6, &Pseudonyms::replaceText},
    {kDasdBackplane, 38, 6, &Pseudonyms::replaceText},
};

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
  std::string_view property;  // of whatever class
  std::string_view (*part)(std::string_view);
};

constexpr InstanceText kInstanceTexts[] = {
    {"SerialNumber", wholeText},
    {"UniqueID", wholeText},
    {"DevicePrefix", wholeText},  // component VPD: the serial number's bytes
    {"DeviceID", serialOfDeviceId},
};

// What of the field the bytes have.
std::span<unsigned char> within(std::span<unsigned char> bytes, std::size_t offset,
                                std::size_t size) {
  if (offset >= bytes.size()) return {};
  return bytes.subspan(offset, std::min(size, bytes.size() - offset));
}

// The numbers of the strings that hold something to replace. Two fields may share one.
std::set<std::size_t> stringNumbers(std::uint8_t type, std::span<const unsigned char> formatted) {
  std::set<std::size_t> numbers;
  for (const SmbiosString& row : kSmbiosStrings) {
    if (row.type == type && row.offset < formatted.size()) numbers.insert(formatted[row.offset]);
  }
  return numbers;
}

void redactStructure(Bytes& structure, Pseudonyms& pseudonyms) {
  const auto formatted = formattedArea(structure);
  if (formatted.empty()) return;
  const std::uint8_t type = formatted.front();
  const auto strings = stringSet(structure);
  for (const std::size_t number : stringNumbers(type, formatted)) {
    if (number >= 1 && number <= strings.size()) pseudonyms.replaceText(strings[number - 1]);
  }
  for (const SmbiosNumber& row : kSmbiosNumbers) {
    if (row.type == type) pseudonyms.replaceBytes(within(formatted, row.offset, row.size));
  }
}

bool beginsWith(const Bytes& command, const CommandStart& start) {
  return command.size() >= start.size() && std::equal(start.begin(), start.end(), command.begin());
}

void redactReplies(DotCommandEntry& entry, Pseudonyms& pseudonyms) {
  for (const ReplyField& row : kReplyFields) {
    if (!beginsWith(entry.command, row.command)) continue;
    for (auto& reply : entry.replies) {
      (pseudonyms.*row.replace)(within(reply.bytes, row.offset, row.size));
    }
  }
}

void redactProperty(std::string_view name, TCIMValue& value, Pseudonyms& pseudonyms) {
  if (value.GetType() != NKRXVEL20::ECIMType::kString) return;
  for (const InstanceText& row : kInstanceTexts) {
    if (row.property != name) continue;
    const std::string text = value.ToString();
    const std::string_view part = row.part(text);
    Bytes bytes(text.begin(), text.end());
    pseudonyms.replaceText({bytes.begin() + (part.data() - text.data()), part.size()});
    value = TCIMValue(std::string(bytes.begin(), bytes.end()));
  }
}

}  // namespace

void redact(MachineFile& machine) {
  Pseudonyms pseudonyms;
  if (machine.smbios) {
    for (auto& structure : machine.smbios->structures) redactStructure(structure.bytes, pseudonyms);
  }
  for (DotCommandEntry& entry : machine.sp.dotCommands) redactReplies(entry, pseudonyms);
  for (Companion& companion : machine.instances) {
    for (auto& [name, value] : companion.properties) redactProperty(name, value, pseudonyms);
  }
}

}  // namespace velhost
