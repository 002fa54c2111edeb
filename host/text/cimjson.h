// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "vel/cimvalue.h"
#include "velhost/cimnamespace.h"

namespace velhost {

// A property value as JSON: numbers as numbers, booleans, texts (as UTF-8), a date-time as its CIM
// text, an empty value as null.
nlohmann::ordered_json plainValue(const NKRXVEL20::TCIMValue& value);

// An instance's properties with plain values, in their order.
nlohmann::ordered_json plainValues(const NKRXVEL20::host::PropertyList& properties);

// The text as UTF-8; null for none.
nlohmann::ordered_json textOrNull(const std::string& text);

// The document's text: indented, one line feed at the end; characters that a terminal obeys or does
// not show are escaped.
std::string documentText(const nlohmann::ordered_json& document);

// The same in one line.
std::string lineText(const nlohmann::ordered_json& document);

}  // namespace velhost
