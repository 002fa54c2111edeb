// SPDX-License-Identifier: Apache-2.0
#include "velhost/schema.h"

#include <algorithm>
#include <utility>

#include "mofschema.h"

namespace NKRXVEL20::host {
namespace {

using enum ECIMType;

SchemaPtr& held() {
  static SchemaPtr current = std::make_shared<const Schema>();
  return current;
}

}  // namespace

SchemaError::~SchemaError() = default;

SchemaPtr parseSchema(std::span<const SchemaFile> files) {
  mof::Source source;
  for (const SchemaFile& file : files) {
    source.add(file.name, file.text.size(),
               [&](std::span<char> room) { std::ranges::copy(file.text, room.begin()); });
  }
  return mof::schemaOf(std::move(source));
}

void setSchema(SchemaPtr schema) {
  held() = schema ? std::move(schema) : std::make_shared<const Schema>();
}

SchemaPtr currentSchema() { return held(); }

std::span<const ClassSchema> schema() { return held()->classes; }

const ClassSchema* findClass(const Schema& schema, std::string_view name) {
  const auto& sorted = schema.classesByName;
  const auto found = std::ranges::lower_bound(sorted, name, {}, &ClassSchema::name);
  return found == sorted.end() || (*found)->name != name ? nullptr : *found;
}

const ClassSchema* findClass(std::string_view name) { return findClass(*held(), name); }

const PropertySchema* findProperty(const ClassSchema& cimClass, std::string_view name) {
  const auto found = std::ranges::find(cimClass.properties, name, &PropertySchema::name);
  return found == cimClass.properties.end() ? nullptr : &*found;
}

bool derivesFrom(const ClassSchema& cimClass, const ClassSchema& ancestor) {
  const ClassSchema* above = &cimClass;
  while (above != nullptr && above != &ancestor) above = above->superclass;
  return above != nullptr;
}

std::string_view typeName(ECIMType type) {
  switch (type) {
    case kString:
      return "string";
    case kBoolean:
      return "boolean";
    case kUint8:
      return "uint8";
    case kUint16:
      return "uint16";
    case kUint64:
      return "uint64";
    case kDateTime:
      return "datetime";
    case kEmpty:
      break;
  }
  return "";
}

}  // namespace NKRXVEL20::host
