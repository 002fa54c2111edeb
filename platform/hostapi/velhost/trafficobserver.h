// SPDX-License-Identifier: Apache-2.0
//
// Sees what plug-ins ask of the SP driver while they do so.
#pragma once

#include <cstdint>

#include "vel/export.h"
#include "velhost/spdriver.h"

namespace NKRXVEL20::host {

// Is called on the thread that asks the driver, and must not ask it itself or throw.
class VEL_API TrafficObserver {
 public:
  TrafficObserver() = default;
  virtual ~TrafficObserver();
  TrafficObserver(const TrafficObserver&) = delete;
  TrafficObserver& operator=(const TrafficObserver&) = delete;

  // That many SPs were found.
  virtual void found(int spCount) = 0;
  // Each SP has so many of a component (its command's first four bytes); negative: it is not listed.
  virtual void counted(const Bytes& component, std::int32_t count) = 0;
  // A command is about to be sent: nothing of the answer is known.
  virtual void sends(const TrafficEntry& command) = 0;
  // And has come to an end.
  virtual void got(const TrafficEntry& command) = 0;
  // Bytes are about to be printed on standard error.
  virtual void prints() = 0;
};

// Null takes it away. It must live until then.
VEL_API void setTrafficObserver(TrafficObserver* observer);

}  // namespace NKRXVEL20::host
