// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/trace.h"

#include <algorithm>
#include <sstream>

namespace sweep {
namespace {

constexpr const char* kNames[kKinds] = {
    "class lookup", "class name",   "enumeration", "creation",    "property read",  "value read",
    "property set", "add to class", "driver call", "dot command", "Tamber command", "IPMI command",
    "SMBIOS read",  "SMBIOS close", "core log",    "failure log", "thrown"};

constexpr std::ptrdiff_t kShown = 6;  // lines of either side

void show(std::ostream& out, const char* whose, const Trace& trace, std::ptrdiff_t from) {
  out << whose << " (" << trace.size() << " events):\n";
  const auto end = std::min(std::ssize(trace), from + kShown);
  for (auto i = std::max<std::ptrdiff_t>(from - 2, 0); i < end; ++i) {
    out << "  " << i << ' ' << trace[static_cast<std::size_t>(i)] << '\n';
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Event& event) {
  out << kNames[static_cast<std::size_t>(event.kind)] << ' ' << event.what;
  if (!event.detail.empty()) out << ' ' << event.detail;
  if (!event.value.empty()) out << " [" << event.value << ']';
  return out << (event.fails ? " fails" : "");
}

std::string difference(const Trace& expected, const Trace& actual) {
  if (expected == actual) return "";
  const auto parted = std::ranges::mismatch(expected, actual).in1 - expected.begin();
  std::ostringstream out;
  show(out, "expected", expected, parted);
  show(out, "actual", actual, parted);
  return out.str();
}

Event coreLog(int severity, const std::string& text) {
  return {Kind::kCoreLog, std::to_string(severity), {}, text};
}

Event failureLog(const std::string& text) { return {Kind::kFailureLog, "3", {}, text}; }

Event thrown(const std::string& what) { return {Kind::kThrown, what, {}, {}}; }

}  // namespace sweep
