// SPDX-License-Identifier: Apache-2.0
//
// A class or a property as its schema tells of it, for people: lines of at most `width` characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "velhost/schema.h"

namespace velhost {

// What the class is, who serves it, what tells its instances apart.
std::string classHead(const NKRXVEL20::host::ClassSchema& cimClass, std::size_t width);

// The head, then each property with its meaning and its sources in few words.
std::string classExplained(const NKRXVEL20::host::ClassSchema& cimClass, std::size_t width);

// Meaning, type, bound and values.
std::string propertyHead(const NKRXVEL20::host::ClassSchema& cimClass,
                         const NKRXVEL20::host::PropertySchema& property, std::size_t width);

// The head, then each line of origin as it stands and in words.
std::string propertyExplained(const NKRXVEL20::host::ClassSchema& cimClass,
                              const NKRXVEL20::host::PropertySchema& property, std::size_t width);

// A line of origin as it stands, and in a sentence below it.
std::string lineExplained(std::string_view text, std::size_t width);

}  // namespace velhost
