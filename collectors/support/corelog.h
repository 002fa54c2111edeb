// SPDX-License-Identifier: Apache-2.0
//
// Entries for the core logger.
#pragma once

#include <string>

#include "vel/log.h"
#include "vel/rootobject.h"

namespace collector {

inline void writeLog(NKRXVEL20::EVELLogSeverity severity, const std::string& text) {
  NKRXVEL20::TRootObject::GetCoreLogger().Log(severity, text);
}

inline void logFailure(const std::string& text) { writeLog(NKRXVEL20::kSeverityFailure, text); }

inline void logPrevented(const std::string& text) { writeLog(NKRXVEL20::kSeverityPrevented, text); }

inline void logProgress(const std::string& text) { writeLog(NKRXVEL20::kSeverityProgress, text); }

// A trace is two entries: a fixed text, then the value.
inline void logTrace(const std::string& text, const std::string& value) {
  logProgress(text);
  logProgress(value);
}

}  // namespace collector
