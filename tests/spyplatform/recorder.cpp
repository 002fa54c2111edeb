// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/recorder.h"

#include <algorithm>
#include <array>
#include <utility>

namespace spyplatform {

namespace {

constexpr int kShownBytes = 40;

bool matches(const Rule& rule, const std::string& operation, const std::string& line) {
  return rule.operation == operation &&
         std::ranges::all_of(rule.parts, [&](const std::string& part) {
           return line.find(part) != std::string::npos;
         });
}

}  // namespace

State& state() {
  static State theState;
  return theState;
}

void reset() {
  auto manager = std::move(state().pluginManager);
  state() = {};
  state().pluginManager = std::move(manager);
  state().firstThread = std::this_thread::get_id();
}

std::string nextName(const std::string& kind) {
  return kind + "#" + std::to_string(++state().created[kind]);
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char character : text) {
    if (character == '\n') {
      result += "\\n";
    } else {
      result += character;
    }
  }
  return result + "\"";
}

std::string hex(const unsigned char* bytes, int count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string result;
  for (int i = 0; i < count; ++i) {
    if (i > 0) result += ' ';
    result += kDigits[bytes[i] >> 4U];
    result += kDigits[bytes[i] & 0xFU];
  }
  return result;
}

std::string describeBytes(const unsigned char* bytes, int count) {
  if (bytes == nullptr) return "null";
  int used = count;
  while (used > 0 && bytes[used - 1] == 0) --used;
  if (used <= 0) return std::to_string(count) + " zero bytes";
  return std::to_string(count) + " bytes " + hex(bytes, std::min(used, kShownBytes)) +
         (used > kShownBytes ? " ..." : ", then zeros");
}

Call::Call(const std::string& operation, std::string line) : line_(std::move(line)) {
  if (state().muted) return;
  state().operations.push_back(operation);
  std::function<void()> action;
  for (Rule& rule : state().rules) {
    if (!matches(rule, operation, line_)) continue;
    ++rule.seen;
    if (rule.nth != 0 && rule.nth != rule.seen) continue;
    if (rule.action) {
      action = rule.action;
    } else {
      outcome_ = rule.outcome;
    }
  }
  if (action) action();
}

void Call::writeDown(const std::string& result) const {
  if (state().muted) return;
  const bool isFirstThread = std::this_thread::get_id() == state().firstThread;
  state().trace.push_back((isFirstThread ? "" : "on another thread: ") + line_ + result);
}

}  // namespace spyplatform
