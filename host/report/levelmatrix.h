// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/comparison/levelsummary.h"
#include "host/report/html.h"
#include "host/report/machineview.h"

namespace velhost {

// A machine's row.
struct MatrixRow {
  Anchor anchor;
  std::string name;
  std::string file;
  std::string model;
  std::vector<ElementLevels> elements;  // of this machine alone
  std::vector<ClassEnd> classes;
  bool tellsStates = true;
};

// The levels of machines beside each other: a row a machine, the machines of a model together, a
// column a class. Those that are odd (host/comparison/levelsummary.h) are marked, and listed first.
class LevelMatrix {
 public:
  void add(const Findings& findings, const MachineView& machine, const Anchor& anchor);

  // Empty where no machine has a level.
  Html section() const;

 private:
  LevelCounter counter_;
  std::vector<MatrixRow> rows_;
};

}  // namespace velhost
