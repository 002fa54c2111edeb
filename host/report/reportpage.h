// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/report/changes.h"
#include "host/report/html.h"
#include "host/report/levelmatrix.h"
#include "host/results/findings.h"

namespace velhost {

// One page of HTML about machines, made as they come in, that needs nothing beside it. The same
// machines give the same bytes.
class ReportPage {
 public:
  // `file`: the name of the file that tells of the machine. Throws std::logic_error as classEntries
  // does.
  void add(Findings findings, const std::string& file);

  // A file that should have told of a machine, and why it does not.
  void addUnread(const std::string& file, const std::string& reason);

  std::string text() const;

 private:
  Html title() const;
  Html overview() const;
  Html changes() const;
  Html levels() const;

  std::size_t count_ = 0;
  std::vector<ToldMachine> compared_;  // as long as there are no more than two
  std::string firstName_;
  std::size_t unread_ = 0;
  LevelMatrix matrix_;
  Html rows_;  // of the overview
  Html sections_;
};

}  // namespace velhost
