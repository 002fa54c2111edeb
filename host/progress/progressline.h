// SPDX-License-Identifier: Apache-2.0
//
// The progress of a collection on the terminal's status line.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

#include "host/files/statusline.h"
#include "host/progress/collectionprogress.h"
#include "velhost/commandtime.h"
#include "velhost/trafficobserver.h"

namespace velhost {

// Who asks a machine that answers at once is shown nothing.
inline constexpr std::chrono::milliseconds kQuietTime{1000};

// What passes is seen on one thread; another one may redraw.
class ProgressLine : public NKRXVEL20::host::TrafficObserver {
 public:
  // Both must outlive it.
  ProgressLine(StatusLine& line, NKRXVEL20::host::Clock& clock, std::vector<KnownCommand> known);

  void begin(bool isLast);

  // To be called every now and then.
  void redraw();

  void found(int spCount) override;
  void counted(const NKRXVEL20::host::Bytes& component, std::int32_t count) override;
  void sends(const NKRXVEL20::host::TrafficEntry& command) override;
  void got(const NKRXVEL20::host::TrafficEntry& command) override;
  void prints() override;

 private:
  std::mutex mutex_;
  StatusLine& line_;
  NKRXVEL20::host::Clock& clock_;
  NKRXVEL20::host::TimePoint start_;
  bool isPrinted_ = false;  // somebody else writes on the terminal, until the next command
  CollectionProgress progress_;
};

}  // namespace velhost
