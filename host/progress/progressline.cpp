// SPDX-License-Identifier: Apache-2.0
#include "host/progress/progressline.h"

#include <utility>

namespace velhost {

using NKRXVEL20::host::TrafficEntry;
using Lock = std::lock_guard<std::mutex>;

ProgressLine::ProgressLine(StatusLine& line, NKRXVEL20::host::Clock& clock,
                           std::vector<KnownCommand> known)
    : line_(line), clock_(clock), start_(clock.now()), progress_(std::move(known)) {}

void ProgressLine::begin(bool isLast) {
  const Lock lock(mutex_);
  progress_.begin(isLast);
}

void ProgressLine::redraw() {
  const Lock lock(mutex_);
  if (isPrinted_ || clock_.now() - start_ < kQuietTime) return;
  line_.show(progress_.text(line_.room()));
}

void ProgressLine::found(int spCount) {
  const Lock lock(mutex_);
  progress_.found(spCount);
}

void ProgressLine::counted(const NKRXVEL20::host::Bytes& component, std::int32_t count) {
  const Lock lock(mutex_);
  progress_.counted(component, count);
}

void ProgressLine::sends(const TrafficEntry& command) {
  const Lock lock(mutex_);
  isPrinted_ = false;
  progress_.sends(command, clock_.now());
}

void ProgressLine::got(const TrafficEntry& command) {
  const Lock lock(mutex_);
  progress_.got(command, clock_.now());
}

void ProgressLine::prints() {
  const Lock lock(mutex_);
  isPrinted_ = true;
  line_.hide();
}

}  // namespace velhost
