// SPDX-License-Identifier: Apache-2.0
//
// A schema made of what MOF files declare.
#pragma once

#include <string>
#include <vector>

#include "mofdocument.h"

namespace NKRXVEL20::mof {

// What a schema's texts and lists lie in.
struct Store {
  explicit Store(std::span<const host::SchemaFile> files) : source(files) {}

  Source source;
  std::string decoded;  // strings that were not said in one piece
  std::vector<std::string_view> values;
  std::vector<host::QualifierDeclaration> declarations;
  std::vector<host::Qualifier> qualifiers;
  std::vector<std::vector<host::PropertySchema>> properties;  // of each class
  std::vector<host::ClassSchema> classes;
  std::vector<const host::ClassSchema*> classesByName;
  host::Schema schema;
};

// Throws Fault for what contradicts itself or DSP0004.
void build(Document document, Store& store);

}  // namespace NKRXVEL20::mof
