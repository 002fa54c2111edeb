// SPDX-License-Identifier: Apache-2.0
//
// The same with a machine: which bytes of it made the values. A line that is said to have given a
// value has been worked out once more from these bytes, and gave it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "host/collectors/queryresult.h"
#include "host/explanation/evidence.h"
#include "velhost/schema.h"

namespace velhost {

// What came of asking the machine for the class.
struct Inquiry {
  const NKRXVEL20::host::ClassSchema& cimClass;
  const QueryContext& context;
  const QueryResult& result;
  const Evidence& evidence;
  std::optional<std::uint64_t> node = std::nullopt;  // of which instances are shown; nullopt: all
  std::size_t width = 80;
};

inline constexpr std::size_t kMostExplained = 1024;  // instances; a line says how many more

// The class, and where the values of its first instance come from.
std::string classOnMachine(const Inquiry& inquiry);

// The property, and the bytes of each instance, line of origin by line of origin.
std::string propertyOnMachine(const Inquiry& inquiry,
                              const NKRXVEL20::host::PropertySchema& property);

}  // namespace velhost
