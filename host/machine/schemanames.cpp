// SPDX-License-Identifier: Apache-2.0
#include "host/machine/schemanames.h"

#include <span>
#include <vector>

#include "host/text/nearestname.h"

namespace velhost {
namespace {

template <class Element>
std::string suggestionOf(std::string_view word, std::span<const Element> elements) {
  std::vector<std::string_view> names;
  names.reserve(elements.size());
  for (const Element& element : elements) names.push_back(element.name);
  return suggestion(word, names);
}

}  // namespace

std::string classSuggestion(std::string_view word) {
  return suggestionOf(word, NKRXVEL20::host::schema());
}

std::string propertySuggestion(std::string_view word,
                               const NKRXVEL20::host::ClassSchema& cimClass) {
  return suggestionOf(word, cimClass.properties);
}

}  // namespace velhost
