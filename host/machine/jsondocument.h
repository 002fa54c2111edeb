// SPDX-License-Identifier: Apache-2.0
//
// A JSON document that people wrote: read with the place of whatever is wrong in it.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "host/machine/machinebudget.h"
#include "host/text/nearestname.h"

namespace velhost {

using Json = nlohmann::ordered_json;

// Something is wrong in a document. what() is "PLACE: what is wrong", where the place is
// "LINE:COLUMN" for a text that is no JSON and " POINTER" (RFC 6901) for everything else.
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Comments are allowed, a key that an object has twice is not, nor is what goes beyond kMostLevels
// or `mostValues`: that is refused where it begins. Throws DocumentError.
Json parseDocument(std::string_view text, std::size_t mostValues = kMostValues);

// A value in a document and the way to it. Each getter throws DocumentError for a value of another
// kind. A cursor must not outlive the one that it came from.
class Cursor {
 public:
  explicit Cursor(const Json& document) : json_(&document) {}
  Cursor(const Json& value, const Cursor& parent, std::string_view key)
      : json_(&value), parent_(&parent), key_(key) {}
  Cursor(const Json& value, const Cursor& parent, std::size_t index)
      : json_(&value), parent_(&parent), index_(index) {}

  [[noreturn]] void fail(const std::string& what) const;
  [[noreturn]] void failAt(std::string_view key, const std::string& what) const;

  const Json& json() const { return *json_; }
  bool isText() const { return json_->is_string(); }
  bool isArray() const { return json_->is_array(); }
  bool isObject() const { return json_->is_object(); }
  bool isNull() const { return json_->is_null(); }
  bool has(std::string_view key) const { return json_->is_object() && json_->contains(key); }
  std::size_t index() const { return index_; }

  const std::string& text() const;
  bool boolean() const;
  const Json::array_t& array() const;
  const Json::object_t& object() const;

  // 2.0 is the integer 2, as it is for JSON Schema.
  template <std::integral T>
  T integer(T lowest = std::numeric_limits<T>::min(),
            T highest = std::numeric_limits<T>::max()) const;

  // Counts bytes that the document asks for; fails when it comes to more than kMostBytes in sum. To
  // be called before memory is taken for them.
  void spendBytes(std::size_t count) const;

  // Calls read(Cursor) for each element; fails when there are more than `most`.
  template <class Read>
  void eachElement(Read read, std::size_t most = std::numeric_limits<std::size_t>::max()) const;

  // Calls read(key, Cursor) for each member.
  template <class Read>
  void eachMember(Read read) const;

 private:
  std::string pointer() const;

  const Json* json_;
  const Cursor* parent_ = nullptr;
  std::string_view key_;
  std::size_t index_ = 0;
  mutable std::size_t bytesSpent_ = 0;  // of the document's own cursor: for all that come from it
};

// A member that an object may have, and how it is read into a T.
template <class T>
struct Member {
  std::string_view key;
  void (*read)(const Cursor&, T&);
  bool required = false;
};

// Reads an object by the table of its members, in the document's order. A key that the table does
// not have is an error.
template <class T, std::size_t N>
void readMembers(const Cursor& object, const Member<T> (&members)[N], T& into) {
  object.eachMember([&](const std::string& key, const Cursor& value) {
    for (const Member<T>& member : members) {
      if (member.key == key) return member.read(value, into);
    }
    std::array<std::string_view, N> keys;
    std::ranges::transform(members, keys.begin(), &Member<T>::key);
    value.fail("unknown key" + suggestion(key, keys));
  });
  for (const Member<T>& member : members) {
    if (member.required && !object.has(member.key)) object.failAt(member.key, "is missing");
  }
}

// The row of the name table whose name the text at the cursor is.
template <class T, std::size_t N>
T choice(const Cursor& at, const std::pair<std::string_view, T> (&names)[N]) {
  std::string expected;
  for (const auto& [name, value] : names) {
    if (at.text() == name) return value;
    expected += expected.empty() ? "" : ", ";
    expected += '"' + std::string(name) + '"';
  }
  at.fail("must be one of " + expected);
}

template <std::integral T>
T Cursor::integer(T lowest, T highest) const {
  constexpr double kExact = 9007199254740992.0;  // 2^53: every integer up to it is a double
  const auto accept = [&](auto value) -> T {
    if (std::cmp_less(value, lowest) || std::cmp_greater(value, highest)) {
      fail("must be from " + std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return static_cast<T>(value);
  };
  if (json_->is_number_unsigned()) return accept(json_->template get<std::uint64_t>());
  if (json_->is_number_integer()) return accept(json_->template get<std::int64_t>());
  if (json_->is_number_float()) {
    const auto value = json_->template get<double>();
    if (std::trunc(value) == value && std::abs(value) <= kExact) {
      return accept(static_cast<std::int64_t>(value));
    }
  }
  fail("must be an integer");
}

template <class Read>
void Cursor::eachElement(Read read, std::size_t most) const {
  if (array().size() > most) fail("has more than " + std::to_string(most) + " entries");
  std::size_t index = 0;
  for (const Json& element : array()) read(Cursor(element, *this, index++));
}

template <class Read>
void Cursor::eachMember(Read read) const {
  for (const auto& [key, value] : object()) read(key, Cursor(value, *this, key));
}

}  // namespace velhost
