// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

struct CollectionTime {
  std::chrono::milliseconds end;       // since 1970-01-01 00:00 UTC
  std::chrono::milliseconds duration;  // of the request
};

// The exposition of OpenMetrics 1.0, of types and names that Prometheus' own text format 0.0.4 has as
// well, so that node_exporter's textfile collector takes it: the levels of elements, how many
// instances each requested class has, and how it ended. docs/formats.md tells the labels.
// Elements that no label tells apart are one series. Throws std::logic_error as classEntries does.
std::string openMetricsText(const QueryContext& context, const QueryResult& result,
                            const std::optional<CollectionTime>& time);

}  // namespace velhost
