// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/text/screen.h"
#include "velhost/schema.h"

namespace velhost {

using ClassList = std::vector<const NKRXVEL20::host::ClassSchema*>;

// Classes of the schema for people: name, description, properties with their types.
std::string schemaTable(const ClassList& classes, const Screen& screen);

// [ { "name": ..., "description": ..., "properties": [ { "name": ..., "type": ... } ] } ]
std::string schemaJson(const ClassList& classes);

}  // namespace velhost
