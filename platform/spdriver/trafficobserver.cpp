// SPDX-License-Identifier: Apache-2.0
#include "velhost/trafficobserver.h"

#include "observed.h"

namespace NKRXVEL20::host {

namespace {

struct Current {
  TrafficObserver* observer = nullptr;
};

Current& current() {
  static Current current;
  return current;
}

}  // namespace

TrafficObserver::~TrafficObserver() = default;

void setTrafficObserver(TrafficObserver* observer) { current().observer = observer; }

TrafficObserver* trafficObserver() { return current().observer; }

}  // namespace NKRXVEL20::host
