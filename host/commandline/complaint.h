// SPDX-License-Identifier: Apache-2.0
//
// Lines for people on standard error, each with the program's name in front.
#pragma once

#include <string>
#include <string_view>

#include "host/collectors/queryresult.h"

namespace velhost {

// One line of bounded length.
void complain(std::string_view what);

// One line, whole, however long.
void writeErrorLine(const std::string& text);

// Of the exception that ended a request.
void complainOf(const RequestError& error);

// True when nothing failed.
template <class Result>
bool complainOfFailures(const Result& result) {
  if (result.error) complainOf(*result.error);
  for (const std::string& line : result.failures) complain(line);
  return !result.error && result.failures.empty();
}

}  // namespace velhost
