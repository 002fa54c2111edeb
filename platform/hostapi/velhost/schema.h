// SPDX-License-Identifier: Apache-2.0
//
// The schema of the namespace: every class that the collectors of this framework fill or read.
#pragma once

#include <span>
#include <string_view>

#include "vel/cimvalue.h"
#include "vel/export.h"

namespace NKRXVEL20::host {

struct PropertySchema {
  std::string_view name;
  ECIMType type;
};

struct ClassSchema {
  std::string_view name;
  std::string_view description;  // one line for people
  std::span<const PropertySchema> properties;
};

// All classes, those filled by the firmware collector first.
VEL_API std::span<const ClassSchema> schema();

// Null when there is none of that name.
VEL_API const ClassSchema* findClass(std::string_view name);
VEL_API const PropertySchema* findProperty(const ClassSchema& cimClass, std::string_view name);

// The CIM name of a data type: "string", "boolean", "uint8", "uint16", "uint64", "datetime".
VEL_API std::string_view typeName(ECIMType type);

}  // namespace NKRXVEL20::host
