// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/watch.h"

#include "tests/sweep/allocations.h"
#include "velhost/log.h"

namespace sweep {
namespace {

Watch* present = nullptr;  // NOLINT

using NKRXVEL20::host::LogEntry;

void note(Kind kind, const LogEntry& entry) {
  const PlatformWork work;
  if (present == nullptr) return;
  present->trace.push_back({kind, std::to_string(entry.severity), {}, entry.text});
}

}  // namespace

Watch::Watch(Fault watchedFault) : fault(watchedFault) {
  present = this;
  NKRXVEL20::host::setCoreLogSink([](const LogEntry& entry) { note(Kind::kCoreLog, entry); });
  NKRXVEL20::host::setFailureLogSink([](const LogEntry& entry) { note(Kind::kFailureLog, entry); });
}

Watch::~Watch() {
  present = nullptr;
  NKRXVEL20::host::setCoreLogSink({});
  NKRXVEL20::host::setFailureLogSink({});
}

Watch* Watch::current() { return present; }

bool Watch::isDue(Kind kind) {
  const unsigned call = ++calls_.at(static_cast<std::size_t>(kind));
  return kind == fault.kind && fault.isDue(call);
}

void Watch::call(Event event) {
  event.fails = isDue(event.kind) && fault.throws();
  const bool fails = event.fails;
  trace.push_back(std::move(event));
  if (fails) raise(fault.failure);
}

}  // namespace sweep
