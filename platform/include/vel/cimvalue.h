// SPDX-License-Identifier: Apache-2.0
//
// A CIM property value of one of the data types that the schema uses.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>

#include "vel/cimdatetime.h"
#include "vel/export.h"

namespace NKRXVEL20 {

enum class ECIMType { kEmpty, kString, kBoolean, kUint8, kUint16, kUint64, kDateTime };

class VEL_API TCIMValue {
 public:
  // Empty: what a property holds that was never set.
  TCIMValue() = default;

  explicit TCIMValue(const char* text) : value_(std::string(text)) {}
  explicit TCIMValue(const std::string& text) : value_(text) {}
  explicit TCIMValue(bool value) : value_(value) {}
  explicit TCIMValue(std::uint8_t value) : value_(value) {}
  explicit TCIMValue(std::uint16_t value) : value_(value) {}
  explicit TCIMValue(std::uint64_t value) : value_(value) {}
  explicit TCIMValue(TCIMDateTime value) : value_(std::move(value)) {}

  ECIMType GetType() const noexcept { return static_cast<ECIMType>(value_.index()); }

  // Numbers in the given base (2 to 36), booleans as "true" and "false", a date-time as its
  // timestamp, an empty value as the empty text.
  std::string ToString(int base = 10) const;

  // The number held, cut to the width asked for; 0 for a value that is no number.
  std::uint64_t ToUint64() const;
  std::uint8_t ToUint8() const { return static_cast<std::uint8_t>(ToUint64() & 0xFFU); }

  friend bool operator==(const TCIMValue& a, const TCIMValue& b) { return a.value_ == b.value_; }

 private:
  // In the order of ECIMType.
  std::variant<std::monostate, std::string, bool, std::uint8_t, std::uint16_t, std::uint64_t,
               TCIMDateTime>
      value_;
};

// Names to values: the context of a class lookup, the qualifiers of a property setting.
using TCIMValueMap = std::map<std::string, TCIMValue>;

}  // namespace NKRXVEL20
