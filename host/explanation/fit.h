// SPDX-License-Identifier: Apache-2.0
//
// Whether a line of origin gives the value that an instance has.
#pragma once

#include <string>
#include <string_view>

#include "host/explanation/view.h"
#include "velhost/schema.h"

namespace velhost {

enum class Fit {
  kNothing,  // the view has nothing for the line
  kOther,    // it gives another value
  kOpen,     // it has bytes, and what becomes of them is not worked out here
  kGives,    // it gives this one
};

struct Subject {
  const NKRXVEL20::host::ClassSchema& cimClass;
  const NKRXVEL20::host::PropertyList& instance;
};

// Of a property that is not set: the line gives nothing.
Fit fitOf(const Origin& origin, std::string_view property, const Subject& subject,
          const View& view);

bool isSet(const NKRXVEL20::host::PropertyList& instance, std::string_view property);

// The name that the schema gives the value of a property; empty: none.
std::string wordFor(const NKRXVEL20::host::ClassSchema& cimClass, std::string_view property,
                    std::string_view value);

// The placeholders of a template, "sp" for "{sp}".
std::vector<std::string_view> placeholdersOf(std::string_view shape);

}  // namespace velhost
