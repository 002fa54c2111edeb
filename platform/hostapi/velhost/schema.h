// SPDX-License-Identifier: Apache-2.0
//
// The schema: every class that collectors fill or read, as its MOF files (DMTF DSP0221) tell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "vel/cimvalue.h"
#include "vel/export.h"

namespace NKRXVEL20::host {

// The texts and lists of a schema belong to it and live as long as it does; nothing moves or changes
// while it lives.

using TextList = std::span<const std::string_view>;

struct QualifierDeclaration {
  std::string_view name;
  std::string_view type;  // "boolean", "string", "uint32", ...
  bool isArray = false;
  bool hasDefault = false;
  TextList defaults;         // of a qualifier that is no array: one
  std::uint32_t scopes = 0;  // bits, in the order of the reader's table
  std::uint32_t flavors = 0;
};

// A qualifier that a class or property carries in its own text. Each value as text: a string
// decoded, a number in decimal, TRUE or FALSE.
struct Qualifier {
  const QualifierDeclaration* declaration = nullptr;
  TextList values;
};

struct PropertySchema {
  std::string_view name;
  ECIMType type = ECIMType::kEmpty;
  std::string_view description = {};
  TextList mappingStrings = {};  // where the value comes from; docs/schema.md has the notation
  TextList valueMap = {};        // values that have names,
  TextList values = {};          // and the names, as many
  std::uint32_t maxLen = 0;      // of a text, in characters; 0: no bound
  bool isKey = false;            // one of those that tell the class's instances apart
  std::span<const Qualifier> qualifiers = {};  // of its own text
};

struct ClassSchema {
  std::string_view name;
  std::string_view description = {};  // one line for people
  // First those inherited as they are (`inherited` of them), then those of its own text.
  std::span<const PropertySchema> properties = {};
  std::size_t inherited = 0;
  const ClassSchema* superclass = nullptr;
  std::string_view provider = {};  // the name of the plug-in that serves it; empty: none is known
  bool isAbstract = false;         // has no instances of its own
  std::span<const Qualifier> qualifiers = {};  // of its own text
};

struct Schema {
  std::span<const QualifierDeclaration> qualifiers;
  std::span<const ClassSchema> classes;  // in the order of the files, superclasses first
  std::span<const ClassSchema* const> classesByName;  // sorted
};

using SchemaPtr = std::shared_ptr<const Schema>;

struct SchemaFile {
  std::string name;  // for errors
  std::string text;
};

// what() is one line: file, line, column and what is wrong there.
class VEL_API SchemaError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~SchemaError() override;
};

// Reads the files' texts in their order. Throws SchemaError.
VEL_API SchemaPtr parseSchema(std::span<const SchemaFile> files);

// Reads all *.mof files of a folder, in the order of their names. Throws SchemaError, also when the
// folder or a file cannot be read or the folder has no such file.
VEL_API SchemaPtr readSchema(const std::filesystem::path& folder);

// The schema as MOF text. Read again it gives the same schema.
VEL_API std::string mofText(const Schema& schema);

// The same of some of its classes, with what they need: superclasses and declarations of qualifiers.
VEL_API std::string mofText(const Schema& schema, std::span<const ClassSchema* const> classes);

// Sets the schema of this process: that of findClass and of each namespace made from now on. None,
// or null: an empty one.
VEL_API void setSchema(SchemaPtr schema);
VEL_API SchemaPtr currentSchema();

// Null when there is none of exactly that name.
VEL_API const ClassSchema* findClass(const Schema& schema, std::string_view name);
VEL_API const PropertySchema* findProperty(const ClassSchema& cimClass, std::string_view name);

// In the current schema; valid until the next setSchema.
VEL_API std::span<const ClassSchema> schema();
VEL_API const ClassSchema* findClass(std::string_view name);

// True for the class itself too.
VEL_API bool derivesFrom(const ClassSchema& cimClass, const ClassSchema& ancestor);

// The CIM name of a data type: "string", "boolean", "uint8", "uint16", "uint64", "datetime".
VEL_API std::string_view typeName(ECIMType type);

}  // namespace NKRXVEL20::host
