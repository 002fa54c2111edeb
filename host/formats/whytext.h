// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"
#include "host/text/screen.h"

namespace velhost {

// The steps that failed, for people, by class; those that have the same ones stand together.
std::string whyText(const QueryResult& result, const Screen& screen);

}  // namespace velhost
