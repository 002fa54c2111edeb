// SPDX-License-Identifier: Apache-2.0
//
// Which of the evidence made which instance of a class.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "host/explanation/fit.h"

namespace velhost {

enum class Part { kNone, kReply, kStructure, kString, kInstance, kFru };

// The part of the evidence that a line reads.
Part partOf(const Origin& origin);

// The lines of a property whose conditions hold for the instance.
struct PropertyLines {
  const NKRXVEL20::host::PropertySchema* property = nullptr;
  std::vector<Origin> lines;
};

// One instance, and what explains most of it.
struct Match {
  const NKRXVEL20::host::PropertyList* instance = nullptr;
  View view;
  std::vector<Part> confirmed;  // parts by which a line gives a value that is not blank
};

// The lines of each property of the class.
std::vector<PropertyLines> linesOf(const NKRXVEL20::host::ClassSchema& cimClass);

// In the order of the instances. Collectors publish in the order in which they ask, so of pieces
// that explain as much the next one in turn is taken.
std::vector<Match> matchesOf(const NKRXVEL20::host::ClassSchema& cimClass,
                             std::span<const NKRXVEL20::host::PropertyList* const> instances,
                             const Evidence& evidence);

// What a property's value comes from: the first of its lines that gives it; otherwise the first with
// bytes in a part that others of the instance's values confirm, if none of these is contradicted. Of
// a property that is not set a line that gives nothing.
struct Explained {
  const Origin* line = nullptr;  // null: nothing explains it
  Fit fit = Fit::kNothing;
};

Explained explainedBy(const PropertyLines& holding, const Match& match,
                      const NKRXVEL20::host::ClassSchema& cimClass);

// Those of the lines whose conditions hold.
PropertyLines holdingFor(const PropertyLines& lines, const NKRXVEL20::host::PropertyList& instance);

}  // namespace velhost
