// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/classfailure.h"

#include <algorithm>

#include "host/collectors/requesterror.h"
#include "vel/exception.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using Names = std::vector<std::string>;

// The place behind the last class that has instances.
std::size_t behindPublished(const Names& classes, const std::set<std::string>& published) {
  std::size_t place = classes.size();
  while (place > 0 && !published.contains(classes[place - 1])) --place;
  return place;
}

// The places from there on of classes that the schema gives to another collector.
std::vector<std::size_t> foreignPlaces(const Names& classes, std::size_t from,
                                       const std::string& collector) {
  std::vector<std::size_t> places;
  for (std::size_t i = from; i < classes.size(); ++i) {
    if (NKRXVEL20::host::findClass(classes[i])->provider != collector) places.push_back(i);
  }
  return places;
}

// The class that was refused is known when it is the only one that may be.
Names refusals(const Names& classes, const std::set<std::string>& published,
               const std::string& collector) {
  Names texts(classes.size());
  const std::size_t from = behindPublished(classes, published);
  const auto foreign = foreignPlaces(classes, from, collector);
  const bool isKnown = foreign.size() == 1 || from + 1 == classes.size();
  const std::size_t first = foreign.size() == 1 ? foreign.front() : from;
  for (std::size_t i = first; i < classes.size(); ++i) {
    texts[i] = collector + " does not serve " +
               (isKnown ? classes[first] : "one of the classes asked for with it");
  }
  return texts;
}

}  // namespace

Names classFailures(const Names& classes, const std::set<std::string>& published,
                    const std::string& collector, const RequestError& error) {
  const bool isRefused = error.code == NKRXVEL20::kErrorClassNotServed;
  if (error.wasAsked && isRefused) return refusals(classes, published, collector);
  Names failures(classes.size(), error.wasAsked ? endText(collector, error) : error.what);
  return failures;
}

std::string endText(const std::string& collector, const RequestError& error) {
  return collector + " ended in " + errorText(error);
}

}  // namespace velhost
