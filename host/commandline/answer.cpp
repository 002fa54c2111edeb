// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/answer.h"

#include <utility>

#include "host/formats/csv.h"
#include "host/formats/inventory.h"
#include "host/formats/ndjson.h"
#include "host/formats/plainjson.h"
#include "host/formats/tableformat.h"

namespace velhost {

CollectionTime Stopwatch::time() const {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  const auto end = std::chrono::system_clock::now().time_since_epoch();
  const auto duration = std::chrono::steady_clock::now() - begin_;
  return {duration_cast<milliseconds>(end), duration_cast<milliseconds>(duration)};
}

void Answer::add(QueryResult result, const CollectionTime& time) {
  if (format_ == Format::kTrace) {
    if (!trace_) trace_.emplace(context_, replies_);
    trace_->add(result);
  } else {
    last_ = std::move(result);
    if (context_.machineSource == "live") time_ = time;
  }
}

std::string Answer::text() const {
  switch (format_) {
    case Format::kJson:
      return plainJson(last_);
    case Format::kInventory:
      return inventoryText(context_, last_);
    case Format::kNdjson:
      return ndjsonText(context_, last_);
    case Format::kCsv:
      return csvText(context_, last_);
    case Format::kOpenMetrics:
      return openMetricsText(context_, last_, time_);
    case Format::kTrace:
      return trace_ ? trace_->text() : ResultDocument(context_).text();
    case Format::kTable:
    case Format::kMof:
      break;
  }
  return tableText(context_, last_, table_);
}

}  // namespace velhost
