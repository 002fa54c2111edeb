// SPDX-License-Identifier: Apache-2.0
//
// The two logs of the framework: the core logger and the failure-data log.
#pragma once

#include <string>

#include "vel/export.h"

namespace NKRXVEL20 {

// Any other number is allowed as well; a logger passes it on as it is.
enum EVELLogSeverity : int {
  kSeverityFailure = 0,    // something failed
  kSeverityPrevented = 1,  // a condition that prevents a collection
  kSeverityProgress = 3,   // progress and trace
};

class VEL_API ICoreLogger {
 public:
  virtual ~ICoreLogger();
  virtual void Log(EVELLogSeverity severity, const std::string& text) = 0;
};

// Writes one entry to the failure-data log.
VEL_API void fdrWriteLog(EVELLogSeverity severity, const char* text);

}  // namespace NKRXVEL20
