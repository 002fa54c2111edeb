// SPDX-License-Identifier: Apache-2.0
//
// A result class by class, as the documents show it.
#pragma once

#include <vector>

#include "host/collectors/queryresult.h"

namespace velhost {

// Of the result it was made of, which has to outlive it.
struct ClassEntry {
  const ClassState* state = nullptr;
  std::vector<const NKRXVEL20::host::PublishedInstance*> instances;
};

// One for each requested class, in order; a class that is named twice has one, where it is named
// first. Throws std::logic_error for a requested class without a state, as to show any would be a
// guess.
std::vector<ClassEntry> classEntries(const QueryResult& result);

}  // namespace velhost
