// SPDX-License-Identifier: Apache-2.0
//
// An instance as a comparison sees it: values as texts, so that it makes no difference which kind of
// file they were read from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "velhost/cimnamespace.h"

namespace velhost {

struct SeenInstance {
  const NKRXVEL20::host::PublishedInstance* instance = nullptr;
  std::string all;     // class and every property with its value, in the order of the names
  std::string key;     // the values of the class's keys; empty: the class has none
  std::string placed;  // as `all`, but for the properties that tell the place
  std::string unit;    // part and serial number; empty: they do not tell which unit it is
};

// Documents have U+FFFD for each byte that is no UTF-8.
enum class Texts { kAsTheyAre, kAsUtf8 };

SeenInstance seen(const NKRXVEL20::host::PublishedInstance& instance, Texts texts);

// The values of the class's keys as they are on another node; empty: the instance is of no node.
std::string keyOnNode(const NKRXVEL20::host::PublishedInstance& instance, std::uint64_t node,
                      Texts texts);

// As it is seen: two that are equal are no difference.
std::string seenText(const NKRXVEL20::TCIMValue& value, Texts texts);

// Says nothing: empty, or blanks alone.
bool isBlank(std::string_view text);

// Whether the property tells where a component is and not what it is: a key, or made of the numbers
// of nodes, slots and structures, as the schema says.
bool tellsPlace(const std::string& className, const std::string& property);

}  // namespace velhost
