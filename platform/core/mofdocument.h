// SPDX-License-Identifier: Apache-2.0
//
// What MOF files declare, before anything of it is looked up. Lists lie in pools, end to end: an
// element has the range of its own. All of it is small, as memory that is touched for the first time
// costs a program that starts more than what is done there.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "mofscanner.h"

namespace NKRXVEL20::mof {

struct Range {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;

  std::uint32_t size() const { return end - begin; }
};

// Its text lies where it stands.
struct Name {
  Place at = 0;
  std::uint32_t length = 0;
};

enum class ValueKind : std::uint8_t { kString, kInteger, kBoolean };
enum class ValueForm : std::uint8_t { kNone, kSingle, kArray };

struct ValueNote {
  ValueKind kind;
  Place at;
};

struct Values {
  ValueForm form = ValueForm::kNone;
  Range range;  // in Document::values
};

struct QualifierUse {
  Name name;
  Values values;
};

struct QualifierDecl {
  Name name;
  Name type;
  bool isArray = false;
  Values defaults;
  std::uint32_t scopes = 0;   // bits, in the order of kScopes
  std::uint32_t flavors = 0;  // of kFlavors
};

struct PropertyDecl {
  Name name;
  Name type;
  Range qualifiers;
};

struct ClassDecl {
  Name name;
  Name superclass;  // of length 0: none
  Range qualifiers;
  Range properties;
};

struct Document {
  std::vector<QualifierDecl> qualifierDecls;
  std::vector<ClassDecl> classes;
  std::vector<PropertyDecl> properties;
  std::vector<QualifierUse> uses;
  std::vector<std::string_view> values;
  std::vector<ValueNote> notes;  // beside the values
};

constexpr std::string_view kScopes[] = {"class",     "association", "indication", "property",
                                        "reference", "method",      "parameter",  "any"};
constexpr std::string_view kFlavors[] = {"EnableOverride", "DisableOverride", "Restricted",
                                         "ToSubclass", "Translatable"};

constexpr std::string_view kTrue = "TRUE";
constexpr std::string_view kFalse = "FALSE";

// Reads every file of the source. Throws Fault. `decoded`: see Scanner.
Document parseDocument(const Source& source, std::string& decoded);

}  // namespace NKRXVEL20::mof
