// SPDX-License-Identifier: Apache-2.0
#include "velhost/commandtime.h"

#include <thread>

#include "timelimit.h"

namespace NKRXVEL20::host {

namespace {

class SteadyClock : public Clock {
 public:
  TimePoint now() override { return std::chrono::steady_clock::now(); }
  void sleep(std::chrono::microseconds time) override { std::this_thread::sleep_for(time); }
};

struct Limit {
  std::optional<TimePoint> end;
  Clock* clock = nullptr;
};

Limit& current() {
  static Limit limit;
  return limit;
}

}  // namespace

Clock::~Clock() = default;

Clock& steadyClock() {
  static SteadyClock clock;
  return clock;
}

void setTimeLimit(std::optional<TimePoint> end, Clock& clock) { current() = {end, &clock}; }

std::optional<TimePoint> timeLimit() { return current().end; }

bool isTimeOver() { return current().end && current().clock->now() >= *current().end; }

}  // namespace NKRXVEL20::host
