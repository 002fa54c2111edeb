// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/corelog.h"

#include "tests/support/frameworkfixture.h"

namespace collector::test {
namespace {

class CoreLogTest : public FrameworkTest {};

TEST_F(CoreLogTest, EachEntryHasItsSeverity) {
  logFailure("failed");
  logPrevented("prevented");
  logProgress("going on");
  logTrace("read", "17");
  EXPECT_EQ((Log{{0, "failed"}, {1, "prevented"}, {3, "going on"}, {3, "read"}, {3, "17"}}), log);
  EXPECT_EQ(Log{}, failureLog);
}

}  // namespace
}  // namespace collector::test
