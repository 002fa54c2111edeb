// SPDX-License-Identifier: Apache-2.0
//
// The time that commands to SPs and BMCs take, and the limit that a host may set to it.
#pragma once

#include <chrono>
#include <optional>

#include "vel/export.h"

namespace NKRXVEL20::host {

using TimePoint = std::chrono::steady_clock::time_point;

class VEL_API Clock {
 public:
  Clock() = default;
  virtual ~Clock();
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;

  virtual TimePoint now() = 0;
  virtual void sleep(std::chrono::microseconds time) = 0;
};

// The system's own.
VEL_API Clock& steadyClock();

// From `end` on nothing is sent any more and every command fails at once. One that is under way then
// is given up, where its driver can do that. nullopt: no limit. The clock must outlive the limit.
VEL_API void setTimeLimit(std::optional<TimePoint> end, Clock& clock = steadyClock());

}  // namespace NKRXVEL20::host
