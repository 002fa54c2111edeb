// SPDX-License-Identifier: Apache-2.0
//
// Which of the classes that a collector was asked for in one question its exception kept back.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/collectors/queryresult.h"

namespace velhost {

// For each class of the schema why it got no answer, empty where it got one. `published`: those that
// have instances. A collector ends at the first class that it does not serve; any other exception
// may have come anywhere.
std::vector<std::string> classFailures(const std::vector<std::string>& classes,
                                       const std::set<std::string>& published,
                                       const std::string& collector, const RequestError& error);

// "COLLECTOR ended in TVELException code 1: its text"
std::string endText(const std::string& collector, const RequestError& error);

}  // namespace velhost
