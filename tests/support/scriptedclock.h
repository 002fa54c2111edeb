// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "velhost/commandtime.h"

namespace NKRXVEL20::host {

// Time that passes only where somebody sleeps or a test lets it.
class ScriptedClock : public Clock {
 public:
  TimePoint now() override { return now_; }
  void sleep(std::chrono::microseconds time) override { now_ += time; }

 private:
  TimePoint now_{std::chrono::hours(1)};
};

// Takes the limit away at the end.
struct LimitGuard {
  LimitGuard(TimePoint end, Clock& clock) { setTimeLimit(end, clock); }
  ~LimitGuard() { setTimeLimit(std::nullopt); }
  LimitGuard(const LimitGuard&) = delete;
  LimitGuard& operator=(const LimitGuard&) = delete;
};

}  // namespace NKRXVEL20::host
