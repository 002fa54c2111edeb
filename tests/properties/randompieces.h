// SPDX-License-Identifier: Apache-2.0
//
// What random machines are made of: numbers, bytes, texts, and the identities that stand in them. What
// returns no generator is called inside rc::gen::exec alone, and shrinks with it: towards 0, nothing, the
// first of several.
#pragma once

#include <rapidcheck.h>

#include <cstddef>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace velhost::properties {

using Json = nlohmann::ordered_json;
using Bytes = std::vector<unsigned char>;

// What tells a machine from all others: whoever redacts a recording takes these out of it. None looks
// like a pseudonym, which has the first digits and letters of its shape.
struct Identities {
  std::vector<std::string> serials;
  Bytes uuid;
  Bytes number;  // of four bytes, as memory modules have them
};

Identities someIdentities();

// Bytes of the field in which one identity stands alone, cut or padded with zeros to the size.
Bytes serialField(const Identities& identities, std::size_t size);

const std::string& oneSerial(const Identities& identities);

int numberUpTo(int most);

bool oneIn(int count);   // shrinks to false
bool mostly(int count);  // but for one in so many; shrinks to false as well

template <class T>
T oneOf(std::initializer_list<T> choices) {
  return *rc::gen::elementOf(std::vector<T>(choices));
}

// Up to `most` of them.
template <class T>
std::vector<T> some(int most, rc::Gen<T> item) {
  return *rc::gen::scale(
      static_cast<double>(most) / rc::kNominalSize,
      rc::gen::container<std::vector<T>>(rc::gen::resize(rc::kNominalSize, std::move(item))));
}

// What is made in one piece and shrinks by itself, while what is made behind it stays as it is. `make` runs
// again for that when its caller has long returned, so it holds copies.
template <class Make>
auto apart(Make make) {
  return *rc::gen::exec(std::move(make));
}

// As many bytes, of all kinds; more of those that are characters of ASCII.
Bytes someBytes(std::size_t size);

// UTF-8, not empty and without a zero byte, as firmware and makers write it, and sometimes as they do not:
// versions, dates, names that collectors know, blanks, control characters, an identity in the middle.
std::string someText(const Identities& identities);

// Bytes with an identity somewhere in them: in ASCII, in UTF-16, in digits, as a binary number.
Bytes bytesAround(const Identities& identities);

Bytes bytesOf(const std::string& text);
std::string hexOf(const Bytes& bytes);

// One of the notations in which a machine file may have the bytes.
Json bytesField(const Bytes& bytes);

}  // namespace velhost::properties
