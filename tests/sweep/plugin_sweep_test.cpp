// SPDX-License-Identifier: Apache-2.0
//
// Every call that a whole request makes on every machine of machines/ fails once, and once with all
// behind it; so does every allocation of the plug-in. After each the request has done what the rules
// say, and the same object answers the next one.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <span>

#include "tests/sweep/allocations.h"
#include "tests/sweep/expectation.h"
#include "tests/sweep/subject.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;

// Of the calls of a machine with so many that the sweep would take minutes, every so many-th.
constexpr std::size_t kManyEvents = 2000;
constexpr unsigned kStride = 97;

constexpr int kMostFailures = 5;  // shown by a test

std::vector<std::string> machineNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(MACHINES_DIR)) {
    const std::string file = entry.path().filename().string();
    if (file.ends_with(".json") && file != "machine.schema.json")
      names.push_back(entry.path().stem().string());
  }
  std::ranges::sort(names);
  return names;
}

// The two kinds of which there are most are tried in part where the build is slow; all of them with
// the environment's SWEEP_ALL.
unsigned strideOf(const Trace& trace, bool hasMany = false) {
  if (trace.size() > kManyEvents) return kStride;
  return hasMany && std::getenv("SWEEP_ALL") == nullptr ? SLOW_BUILD_STRIDE : 1;
}

unsigned callsOf(const Trace& trace, Kind kind) {
  return static_cast<unsigned>(std::ranges::count(trace, kind, &Event::kind));
}

struct Way {
  Failure failure;
  int number = 0;
};

// Behind a foreign exception there is no further call, as it ends the request.
bool mayGoOn(const Way& way) {
  return way.failure != Failure::kRuntimeError && way.failure != Failure::kInteger;
}

constexpr Way kThrows[] = {{Failure::kVelException}, {Failure::kRuntimeError}, {Failure::kInteger}};
constexpr Way kCommandFails[] = {{Failure::kRefused},         {Failure::kLength, 0},
                                 {Failure::kLength, 1},       {Failure::kLength, -1},
                                 {Failure::kLength, INT_MIN}, {Failure::kLength, 2049},
                                 {Failure::kLength, INT_MAX}};
constexpr Way kReadFails[] = {{Failure::kReadNothing, 3},
                              {Failure::kReadWhole, 3},
                              {Failure::kReadNothing, 7},
                              {Failure::kReadWhole, 7}};

// What the next request may do, by how far the last one came.
class SecondRequests {
 public:
  explicit SecondRequests(Baselines& baselines) : baselines_(baselines) {}

  const std::vector<Trace>& after(std::size_t count) {
    if (count != count_) traces_ = Expectation::secondAfter(baselines_, count);
    count_ = count;
    return traces_;
  }

 private:
  Baselines& baselines_;
  std::size_t count_ = std::numeric_limits<std::size_t>::max();
  std::vector<Trace> traces_;
};

class PluginSweep : public testing::Test {
 protected:
  void TearDown() override {
    std::cout << "faults tried: " << tried_ << '\n';
    RecordProperty("faults", std::to_string(tried_));
    EXPECT_GT(tried_, 0U);
  }

  void sweep(Kind kind, std::span<const Way> ways) {
    for (const std::string& name : machineNames()) {
      Baselines baselines(machineOf(std::string(MACHINES_DIR) + '/' + name + ".json"));
      const Trace& plain = baselines.plain().trace;
      for (const Way& way : ways) {
        for (unsigned nth = 1; nth <= callsOf(plain, kind);
             nth += strideOf(plain, kind == Kind::kPropertySet)) {
          tryFault(name, baselines, {kind, nth, false, way.failure, way.number});
          if (mayGoOn(way)) tryFault(name, baselines, {kind, nth, true, way.failure, way.number});
          if (failures_ >= kMostFailures) return;
        }
      }
    }
  }

  void tryFault(const std::string& name, Baselines& baselines, Fault fault) {
    if (changesNothing(baselines, fault)) return;
    ++tried_;
    Expectation expected(baselines, fault);
    Subject subject;
    expect(name, fault, difference(expected.first(), subject.ask(baselines.machine(), fault)));
    expect(name, fault, difference(expected.second(), subject.ask(baselines.machine())), "next ");
  }

  void tryAllocation(const std::string& name, Baselines& baselines, SecondRequests& seconds,
                     AllocationFault fault) {
    ++tried_;
    const std::string what = "allocation " + std::to_string(fault.nth);
    Subject subject;
    const Trace first = subject.ask(baselines.machine(), {}, fault);
    const std::size_t done = first.size() - 1;
    Trace expected = baselines.plain().trace;
    expected.resize(std::min(done, expected.size()));
    expected.push_back(thrown("bad_alloc"));
    expect(name, what, difference(expected, first));
    const Trace second = subject.ask(baselines.machine());
    const std::vector<Trace>& allowed = seconds.after(done);
    if (std::ranges::count(allowed, second) > 0) return;
    expect(name, what, difference(allowed.front(), second), "next ");
  }

  // A command that the machine does not answer anyway, or answers with nothing.
  static bool changesNothing(Baselines& baselines, Fault fault) {
    if (fault.throws() || fault.kind == Kind::kSmbiosRead) return false;
    unsigned call = 0;
    for (const Event& event : baselines.plain().trace) {
      if (event.kind != fault.kind || ++call < fault.nth) continue;
      if (fault.fromThenOn && fault.number < 1) return false;
      const bool isEmpty = event.kind == Kind::kDotCommand && event.length < 1;
      if (event.fails || (isEmpty && fault.failure == Failure::kLength)) return true;
      if (!fault.fromThenOn) return false;
    }
    return false;
  }

  template <class What>
  void expect(const std::string& name, const What& what, const std::string& difference,
              const char* which = "") {
    if (difference.empty()) return;
    ++failures_;
    ADD_FAILURE() << name << ", " << what << ", " << which << "request\n" << difference;
  }

  unsigned tried_ = 0;
  int failures_ = 0;
};

TEST_F(PluginSweep, RulesGiveTheRunWithoutFault) {
  for (const std::string& name : machineNames()) {
    ++tried_;
    Baselines baselines(machineOf(std::string(MACHINES_DIR) + '/' + name + ".json"));
    Expectation expected(baselines, {});
    Subject subject;
    expect(name, Fault{}, difference(expected.first(), subject.ask(baselines.machine())));
    expect(name, Fault{}, difference(expected.second(), subject.ask(baselines.machine())), "next ");
  }
}

TEST_F(PluginSweep, ClassLookups) { sweep(Kind::kClassLookup, kThrows); }
TEST_F(PluginSweep, ClassNames) { sweep(Kind::kClassName, kThrows); }
TEST_F(PluginSweep, Enumerations) { sweep(Kind::kEnumeration, kThrows); }
TEST_F(PluginSweep, Creations) { sweep(Kind::kCreation, kThrows); }
TEST_F(PluginSweep, PropertyReads) { sweep(Kind::kPropertyRead, kThrows); }
TEST_F(PluginSweep, ValueReads) { sweep(Kind::kValueRead, kThrows); }
TEST_F(PluginSweep, PropertySets) { sweep(Kind::kPropertySet, kThrows); }
TEST_F(PluginSweep, Publications) { sweep(Kind::kAddToClass, kThrows); }
TEST_F(PluginSweep, DriverCalls) { sweep(Kind::kDriverCall, kThrows); }
TEST_F(PluginSweep, DotCommandsThatThrow) { sweep(Kind::kDotCommand, kThrows); }
TEST_F(PluginSweep, TamberCommandsThatThrow) { sweep(Kind::kTamberCommand, kThrows); }
TEST_F(PluginSweep, IpmiCommandsThatThrow) { sweep(Kind::kIpmiCommand, kThrows); }
TEST_F(PluginSweep, SmbiosReadsThatThrow) { sweep(Kind::kSmbiosRead, kThrows); }
TEST_F(PluginSweep, DotCommands) { sweep(Kind::kDotCommand, kCommandFails); }
TEST_F(PluginSweep, TamberCommands) { sweep(Kind::kTamberCommand, kCommandFails); }
TEST_F(PluginSweep, IpmiCommands) { sweep(Kind::kIpmiCommand, kCommandFails); }
TEST_F(PluginSweep, SmbiosReads) { sweep(Kind::kSmbiosRead, kReadFails); }

// Nobody swallows one: it comes out of the request, which has done until then what it does without.
TEST_F(PluginSweep, Allocations) {
  for (const std::string& name : machineNames()) {
    Baselines baselines(machineOf(std::string(MACHINES_DIR) + '/' + name + ".json"));
    const Trace& plain = baselines.plain().trace;
    Subject().ask(baselines.machine());
    const unsigned count = PluginWork::allocations();
    SecondRequests seconds(baselines);
    for (unsigned nth = 1; nth <= count; nth += strideOf(plain, true)) {
      for (const bool fromThenOn : {false, true}) {
        tryAllocation(name, baselines, seconds, {nth, fromThenOn});
        if (failures_ >= kMostFailures) return;
      }
    }
  }
}

}  // namespace
}  // namespace sweep
