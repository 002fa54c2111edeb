// SPDX-License-Identifier: Apache-2.0
#include "velhost/trafficobserver.h"

#include "observed.h"

namespace NKRXVEL20::host {

namespace {

TrafficObserver*& current() {
  static TrafficObserver* observer = nullptr;
  return observer;
}

}  // namespace

TrafficObserver::~TrafficObserver() = default;

void setTrafficObserver(TrafficObserver* observer) { current() = observer; }

TrafficObserver* trafficObserver() { return current(); }

}  // namespace NKRXVEL20::host
