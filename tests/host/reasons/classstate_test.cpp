// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/classstate.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(ClassState, HasANameAndMayBeTrouble) {
  const struct {
    State state;
    const char* name;
    bool isTrouble;
  } cases[] = {
      {State::kPresent, "present", false},      {State::kPartial, "partial", false},
      {State::kAbsent, "absent", false},        {State::kElsewhere, "elsewhere", false},
      {State::kUnused, "unused", false},        {State::kUnanswered, "unanswered", true},
      {State::kUnreadable, "unreadable", true}, {State::kForbidden, "forbidden", true},
      {State::kFailed, "failed", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.name, stateName(c.state));
    EXPECT_EQ(c.isTrouble, isTrouble(c.state)) << c.name;
  }
}

}  // namespace
}  // namespace velhost
