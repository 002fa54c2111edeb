// SPDX-License-Identifier: Apache-2.0
#include "host/progress/progressdisplay.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>

#include "host/files/signalsheld.h"
#include "host/files/statusline.h"
#include "host/progress/progressline.h"
#include "velhost/schema.h"
#include "velhost/trafficobserver.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

constexpr std::chrono::milliseconds kBetweenDrawings{100};

}  // namespace

struct ProgressDisplay::Drawing {
  explicit Drawing(std::unique_ptr<Terminal> terminal)
      : line(std::move(terminal)),
        progress(line, host::steadyClock(), knownCommands(*host::currentSchema())),
        thread([this](const std::stop_token& stop) { draw(stop); }) {
    host::setTrafficObserver(&progress);
  }
  ~Drawing() { host::setTrafficObserver(nullptr); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  void draw(const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any ended;
    std::unique_lock lock(mutex);
    while (!stop.stop_requested()) {
      ended.wait_for(lock, stop, kBetweenDrawings, [] { return false; });
      if (!stop.stop_requested()) progress.redraw();
    }
  }

  StatusLine line;
  ProgressLine progress;
  std::jthread thread;  // ends first
};

ProgressDisplay::ProgressDisplay(std::unique_ptr<Terminal> terminal) {
  if (!terminal) return;
  const SignalsHeld held;  // a thread gets the mask of the one that starts it
  try {
    drawing_ = std::make_unique<Drawing>(std::move(terminal));
  } catch (const std::system_error&) {
    return;  // no thread is to be had, and the work goes on without
  }
}

ProgressDisplay::~ProgressDisplay() = default;

void ProgressDisplay::begin(bool isLast) {
  if (drawing_) drawing_->progress.begin(isLast);
}

}  // namespace velhost
