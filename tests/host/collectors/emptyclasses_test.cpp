// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/emptyclasses.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

using Names = std::vector<std::string>;

// Nobody named B, C and D; B has an instance, D failed.
Names requestedBut(EmptyClasses which) {
  QueryResult result;
  result.requested = {"A", "B", "C", "D"};
  result.instances = {{"B", {}}};
  result.states = {{"A", "", State::kAbsent, ""},
                   {"B", "", State::kPresent, ""},
                   {"C", "", State::kAbsent, ""},
                   {"D", "", State::kFailed, ""}};
  leaveOutEmpty({"B", "C", "D"}, which, result);
  EXPECT_EQ(result.requested.size(), result.states.size());
  return result.requested;
}

TEST(EmptyClassesTest, AreLeftOutWhereNobodyNamedThem) {
  EXPECT_EQ((Names{"A", "B"}), requestedBut(EmptyClasses::kLeftOut));
  EXPECT_EQ((Names{"A", "B", "D"}), requestedBut(EmptyClasses::kTroubledStay));
}

}  // namespace
}  // namespace velhost
