// SPDX-License-Identifier: Apache-2.0
#include "velhost/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "vel/log.h"
#include "vel/rootobject.h"

namespace NKRXVEL20 {
namespace {

using host::LogEntry;
using testing::ElementsAre;
using testing::IsEmpty;

class LogTest : public testing::Test {
 protected:
  LogTest() {
    host::setCoreLogSink([this](const LogEntry& entry) { core_.push_back(entry); });
    host::setFailureLogSink([this](const LogEntry& entry) { failure_.push_back(entry); });
  }
  ~LogTest() override {
    host::setCoreLogSink({});
    host::setFailureLogSink({});
  }

  std::vector<LogEntry> core_;
  std::vector<LogEntry> failure_;
};

TEST_F(LogTest, EachEntryGoesToItsOwnSinkInOrder) {
  TRootObject::GetCoreLogger().Log(kSeverityProgress, "first");
  fdrWriteLog(kSeverityPrevented, "other log");
  TRootObject::GetCoreLogger().Log(kSeverityFailure, "");
  EXPECT_THAT(core_, ElementsAre(LogEntry{3, "first"}, LogEntry{0, ""}));
  EXPECT_THAT(failure_, ElementsAre(LogEntry{1, "other log"}));
}

TEST_F(LogTest, ASeverityWithoutANamePassesAsItIs) {
  TRootObject::GetCoreLogger().Log(EVELLogSeverity{100}, "notice");
  EXPECT_THAT(core_, ElementsAre(LogEntry{100, "notice"}));
}

TEST_F(LogTest, WithoutASinkEntriesAreDropped) {
  host::setCoreLogSink({});
  host::setFailureLogSink({});
  TRootObject::GetCoreLogger().Log(kSeverityFailure, "dropped");
  fdrWriteLog(kSeverityFailure, "dropped");
  EXPECT_THAT(core_, IsEmpty());
  EXPECT_THAT(failure_, IsEmpty());
}

}  // namespace
}  // namespace NKRXVEL20
