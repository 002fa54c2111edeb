// SPDX-License-Identifier: Apache-2.0
#include "vel/cimvalue.h"

#include <array>
#include <charconv>
#include <concepts>
#include <type_traits>

namespace NKRXVEL20 {
namespace {

template <typename T>
concept Number = std::unsigned_integral<T> && !std::same_as<T, bool>;

std::string numberText(std::uint64_t number, int base) {
  std::array<char, 64> digits{};  // as many as base 2 needs
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, base);
  return {digits.data(), result.ptr};
}

struct ToText {
  int base;

  std::string operator()(std::monostate /*none*/) const { return {}; }
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(Number auto number) const { return numberText(number, base); }
  std::string operator()(const TCIMDateTime& dateTime) const { return dateTime.ToString(); }
};

struct ToNumber {
  std::uint64_t operator()(const auto& value) const {
    if constexpr (Number<std::remove_cvref_t<decltype(value)>>) {
      return value;
    } else {
      return 0;
    }
  }
};

}  // namespace

std::string TCIMValue::ToString(int base) const { return std::visit(ToText{base}, value_); }

std::uint64_t TCIMValue::ToUint64() const { return std::visit(ToNumber{}, value_); }

}  // namespace NKRXVEL20
