// SPDX-License-Identifier: Apache-2.0
//
// Where a host reads what was written to the two logs.
#pragma once

#include <functional>
#include <string>

#include "vel/export.h"

namespace NKRXVEL20::host {

struct LogEntry {
  int severity;
  std::string text;

  friend bool operator==(const LogEntry&, const LogEntry&) = default;
};

using LogSink = std::function<void(const LogEntry&)>;

// Every entry goes to the sink as it is written; an empty sink drops them. Not to be called from
// within a sink.
VEL_API void setCoreLogSink(LogSink sink);
VEL_API void setFailureLogSink(LogSink sink);

}  // namespace NKRXVEL20::host
