// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/jsonmutator.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>
#include <vector>

#include "host/text/hextext.h"

// Of libFuzzer: changes the bytes in place, which also takes words of the dictionary.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace fuzz {
namespace {

using Json = nlohmann::ordered_json;
using Random = std::minstd_rand;

constexpr std::size_t kLongestText = 512;
constexpr unsigned kTextInstead = 24;  // one change in so many is of the text
constexpr std::array<std::int64_t, 14> kNumbers{
    -2147483648, -1, 0, 1, 2, 3, 5, 127, 128, 255, 256, 65535, 2147483647, 4294967296};

template <class List>
auto& oneOf(List& list, Random& random) {
  return list[random() % std::size(list)];
}

// The text's bytes; what it comes to may be longer by half.
std::string changedBytes(std::string_view text) {
  std::vector<std::uint8_t> bytes(text.begin(), text.end());
  const std::size_t most = text.size() + text.size() / 2 + 16;
  bytes.resize(most);
  bytes.resize(LLVMFuzzerMutate(bytes.data(), text.size(), most));
  return {bytes.begin(), bytes.end()};
}

bool isHex(std::string_view text) {
  return !text.empty() &&
         text.find_first_not_of("0123456789ABCDEFabcdef ") == std::string_view::npos;
}

std::string changedHex(const std::string& text) {
  velhost::Bytes bytes;
  try {
    bytes = velhost::bytesOfHex(text);
  } catch (const velhost::HexTextError&) {
    return changedBytes(text);
  }
  const std::string changed = changedBytes(std::string(bytes.begin(), bytes.end()));
  return velhost::hexOfBytes(velhost::Bytes(changed.begin(), changed.end()));
}

// Every value of a document, the document itself first.
using Values = std::vector<Json*>;

void collect(Json& value, Values& values) {
  values.push_back(&value);
  if (!value.is_structured()) return;
  for (Json& part : value) collect(part, values);
}

Values valuesOf(Json& document) {
  Values values;
  collect(document, values);
  return values;
}

template <class Condition>
Json* pick(Json& document, Random& random, Condition condition) {
  Values values = valuesOf(document);
  std::erase_if(values, [&](const Json* value) { return !condition(*value); });
  return values.empty() ? nullptr : oneOf(values, random);
}

bool isFilled(const Json& value) { return value.is_structured() && !value.empty(); }

auto partOf(Json& value, Random& random) {
  auto part = value.begin();
  std::advance(part, static_cast<std::ptrdiff_t>(random() % value.size()));
  return part;
}

void changeScalar(Json& document, Random& random) {
  Json* const value = pick(document, random, [](const Json& v) { return v.is_primitive(); });
  if (value == nullptr) return;
  if (value->is_string()) {
    auto& text = value->get_ref<std::string&>();
    if (text.size() <= kLongestText) text = isHex(text) ? changedHex(text) : changedBytes(text);
  } else if (value->is_boolean()) {
    *value = !value->get<bool>();
  } else {
    *value = oneOf(kNumbers, random);
  }
}

void drop(Json& document, Random& random) {
  Json* const whole = pick(document, random, isFilled);
  if (whole != nullptr) whole->erase(partOf(*whole, random));
}

void repeat(Json& document, Random& random) {
  Json* const list =
      pick(document, random, [](const Json& v) { return v.is_array() && !v.empty(); });
  if (list == nullptr) return;
  const Json element = *partOf(*list, random);
  list->insert(partOf(*list, random), element);
}

void exchange(Json& document, Random& random) {
  Json* const list =
      pick(document, random, [](const Json& v) { return v.is_array() && v.size() > 1; });
  if (list != nullptr) std::swap(*partOf(*list, random), *partOf(*list, random));
}

// A value in the place of another one.
void graft(Json& document, Random& random) {
  const Json piece = *oneOf(static_cast<const Values&>(valuesOf(document)), random);
  const Values values = valuesOf(document);
  *oneOf(values, random) = piece;
}

void addMember(Json& document, Random& random, Json& other) {
  const auto isObject = [](const Json& v) { return v.is_object() && !v.empty(); };
  Json* const from = pick(other, random, isObject);
  Json* const into = pick(document, random, [](const Json& v) { return v.is_object(); });
  if (from == nullptr || into == nullptr) return;
  const auto member = partOf(*from, random);
  const std::string key = member.key();
  Json value = *member;
  (*into)[random() % 8 == 0 ? changedBytes(key) : key] = std::move(value);
}

void addOwnMember(Json& document, Random& random) {
  Json other = document;
  addMember(document, random, other);
}

// Most often bytes and numbers are changed, as that is where the answers are.
constexpr void (*kChanges[])(Json&, Random&) = {
    changeScalar, changeScalar, changeScalar, changeScalar, changeScalar, changeScalar, drop,
    drop,         repeat,       repeat,       exchange,     graft,        addOwnMember};

std::string written(const Json& document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json read(std::string_view text) { return Json::parse(text, nullptr, false, true); }

}  // namespace

std::string mutated(std::string_view text, std::size_t most, unsigned seed) {
  Random random(seed);
  Json document = read(text);
  if (document.is_discarded() || random() % kTextInstead == 0) {
    return changedBytes(text.substr(0, most));
  }
  for (auto count = random() % 4 + 1; count > 0; --count) oneOf(kChanges, random)(document, random);
  return written(document);
}

std::string crossed(std::string_view text, std::string_view other, unsigned seed) {
  Random random(seed);
  Json document = read(text);
  Json from = read(other);
  if (document.is_discarded() || from.is_discarded()) return std::string(text);
  addMember(document, random, from);
  if (random() % 2 == 0)
    *oneOf(static_cast<const Values&>(valuesOf(document)), random) =
        *pick(from, random, [](const Json&) { return true; });
  return written(document);
}

std::size_t put(std::string_view text, std::uint8_t* buffer, std::size_t most) {
  const std::size_t size = std::min(text.size(), most);
  std::copy_n(text.begin(), size, buffer);
  return size;
}

}  // namespace fuzz
