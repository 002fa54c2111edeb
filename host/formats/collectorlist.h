// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/collectorset.h"
#include "host/text/screen.h"

namespace velhost {

// The collectors that are loaded, for people: who each is, its file and the classes that the schema
// says it provides.
std::string collectorList(const CollectorSet& collectors, const Screen& screen);

}  // namespace velhost
