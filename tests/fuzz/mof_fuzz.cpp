// SPDX-License-Identifier: Apache-2.0
//
// A byte 01 parts files. What is read prints, and what is printed reads as the same; everything else
// is refused with a SchemaError. Seeds: schema/*.mof.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/require.h"
#include "velhost/schema.h"

using namespace NKRXVEL20::host;

namespace {

using fuzz::require;

std::vector<SchemaFile> filesOf(std::string_view bytes) {
  std::vector<SchemaFile> files;
  for (std::size_t at = 0; at <= bytes.size();) {
    const std::size_t end = std::min(bytes.find('\x01', at), bytes.size());
    files.push_back({"f.mof", std::string(bytes.substr(at, end - at))});
    at = end + 1;
  }
  return files;
}

bool isSame(TextList a, TextList b) { return std::ranges::equal(a, b); }

bool isSame(const Qualifier& a, const Qualifier& b) {
  return a.declaration->name == b.declaration->name && isSame(a.values, b.values);
}

bool isSame(std::span<const Qualifier> a, std::span<const Qualifier> b) {
  return std::ranges::equal(a, b,
                            [](const Qualifier& x, const Qualifier& y) { return isSame(x, y); });
}

bool isSame(const PropertySchema& a, const PropertySchema& b) {
  return a.name == b.name && a.type == b.type && a.description == b.description &&
         isSame(a.mappingStrings, b.mappingStrings) && isSame(a.valueMap, b.valueMap) &&
         isSame(a.values, b.values) && isSame(a.qualifiers, b.qualifiers) && a.maxLen == b.maxLen &&
         a.isKey == b.isKey;
}

bool isSame(const ClassSchema& a, const ClassSchema& b) {
  return a.name == b.name && a.description == b.description && a.provider == b.provider &&
         a.isAbstract == b.isAbstract && isSame(a.qualifiers, b.qualifiers) &&
         a.inherited == b.inherited &&
         std::ranges::equal(
             a.properties, b.properties,
             [](const PropertySchema& x, const PropertySchema& y) { return isSame(x, y); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SchemaPtr schema;
  try {
    schema = parseSchema(filesOf({reinterpret_cast<const char*>(data), size}));
  } catch (const SchemaError& error) {
    require(std::string_view(error.what()).starts_with("f.mof:"), "a refusal tells the place");
    return 0;
  }
  const SchemaFile printed{"printed.mof", mofText(*schema)};
  const SchemaPtr again = parseSchema({&printed, 1});
  require(mofText(*again) == printed.text, "what is printed is printed alike again");
  const bool same =
      std::ranges::equal(schema->classes, again->classes,
                         [](const ClassSchema& a, const ClassSchema& b) { return isSame(a, b); });
  require(same, "what is printed reads as the same");
  return 0;
}
