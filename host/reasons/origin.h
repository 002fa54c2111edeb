// SPDX-License-Identifier: Apache-2.0
//
// Where a value comes from: a line of MappingStrings, in the notation of docs/schema.md.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "host/text/hextext.h"
#include "velhost/cimnamespace.h"
#include "velhost/schema.h"

namespace velhost {

enum class Source {
  kDotCommand,
  kTamberCommand,
  kIpmi,
  kIpmiRepository,  // a sensor data record
  kIpmiFru,         // an area of a FRU device
  kSmbios,
  kInstance,
  kSysfs,
  kConstant,
  kDerived,
  kOther,  // of a collector that has a notation of its own
};

// On another property of the same instance; one that is not set is the empty text.
struct Condition {
  enum class Kind { kIsSet, kIsUnset, kIs, kIsNot, kHas, kLacks };
  std::string_view property;
  Kind kind = Kind::kIsSet;
  std::string_view text;

  friend bool operator==(const Condition&, const Condition&) = default;
};

// The texts are pieces of the line.
struct Origin {
  Source source = Source::kOther;
  std::string_view line;
  Bytes command;  // IPMI: network function and command, also of what reads records and areas
  bool isNumbered = false;  // one more byte behind the command, the instance's number
  std::optional<Bytes> data;
  std::size_t firstByte = 0;            // of the reply
  std::optional<std::size_t> lastByte;  // nullopt: as many as the reported length says
  int structureType = 0;                // of SMBIOS, or of a record
  int offset = 0;                       // in the structure,
  std::string_view field;               // "string", "uint8" or "uint16" there; empty:
  std::string_view contained;           // a string that has this in it
  std::string_view className;
  std::string_view propertyName;
  std::string_view rule;
  std::string_view text;  // of a constant, the value; of a derived one, the template; a device type
  std::string_view shape;  // the template behind "as"; empty: none
  std::vector<Condition> conditions;
};

// A line that the notation does not have is of Source::kOther.
Origin originOf(std::string_view line);

std::vector<Origin> originsOf(const NKRXVEL20::host::PropertySchema& property);

// All conditions of the line hold for the instance.
bool holdsFor(const Origin& origin, const NKRXVEL20::host::PropertyList& instance);

// The value of a property as text; empty where it is not set.
std::string valueText(const NKRXVEL20::host::PropertyList& instance, std::string_view property);

}  // namespace velhost
