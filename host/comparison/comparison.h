// SPDX-License-Identifier: Apache-2.0
//
// What is different between two findings, the ones of before and the ones of after: pure, and of no
// particular class. What points into the findings is good as long as they live.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/results/findings.h"

namespace velhost {

struct PropertyChange {
  std::string name;
  const NKRXVEL20::TCIMValue* before = nullptr;  // null: not set
  const NKRXVEL20::TCIMValue* after = nullptr;
};

// The same instance in both.
struct InstanceChange {
  const NKRXVEL20::host::PublishedInstance* before = nullptr;
  const NKRXVEL20::host::PublishedInstance* after = nullptr;
  // In the order of before, then those that only after has. Of one that moved without those that tell
  // the place.
  std::vector<PropertyChange> properties = {};
};

struct ClassComparison {
  std::string className;
  const ClassState* before = nullptr;  // null: the class is not in those findings
  const ClassState* after = nullptr;
  // False where something should have answered and did not: what is not there is not gone.
  bool isCompared = true;
  bool hasOtherState = false;  // than before, by what the files tell of states
  std::size_t countBefore = 0;
  std::size_t countAfter = 0;

  std::vector<InstanceChange> changed = {};
  std::vector<InstanceChange> moved = {};  // the same unit, by its serial number, in another place
  std::vector<const NKRXVEL20::host::PublishedInstance*> went = {};
  std::vector<const NKRXVEL20::host::PublishedInstance*> came = {};

  bool isDifferent() const {
    return hasOtherState || !(changed.empty() && moved.empty() && went.empty() && came.empty());
  }
};

struct Comparison {
  std::vector<ClassComparison> classes;  // all: those of before, then those that only after has

  bool isDifferent() const;
};

// Instances are the same by their class's keys; several of equal keys by their values, then by their
// order. Those of a class without keys, or of one that the schema does not have, by all of their
// values. The order of instances and properties tells nothing.
//
// A unit is known by its serial and part number, where no other of its class has both: what has moved
// is no change of the two places. The same reason in other words is no difference.
Comparison compared(const Findings& before, const Findings& after);

}  // namespace velhost
