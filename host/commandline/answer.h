// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/collectors/queryresult.h"
#include "host/commandline/commandline.h"
#include "host/formats/openmetrics.h"
#include "host/formats/resultdocument.h"
#include "host/formats/tableformat.h"

namespace velhost {

// The time of a request, begun when the watch is made.
class Stopwatch {
 public:
  CollectionTime time() const;

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// The answer in the format asked for, made of the results as they come in: the trace has all of
// them, every other format the last one.
class Answer {
 public:
  // The context has to outlive it, and says who was asked when the first result is there.
  Answer(Format format, const TableOptions& table, Replies replies, const QueryContext& context)
      : format_(format), table_(table), replies_(replies), context_(context) {}

  void add(QueryResult result, const CollectionTime& time);
  std::string text() const;

 private:
  Format format_;
  TableOptions table_;
  Replies replies_;  // of the trace
  const QueryContext& context_;
  std::optional<ResultDocument> trace_;
  QueryResult last_;
  std::optional<CollectionTime> time_;  // of the live machine: a machine file has none
};

}  // namespace velhost
