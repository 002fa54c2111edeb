// SPDX-License-Identifier: Apache-2.0
#include "host/formats/whytext.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(WhyText, ClassesWithTheSameStepsStandTogether) {
  QueryResult result;
  EXPECT_EQ("No step failed.\n", whyText(result, {}));
  const ClassState vpd{"KRXSG_Vpd", "", State::kPartial, "r", {"a", "b"}};
  result.states = {vpd,
                   {"KRXSG_cKVM", "", State::kPresent, "", {}},
                   {"KRXSG_DiagnosticVPD", "", State::kUnanswered, "r", {"b"}},
                   {"KRXSG_PostBIOSVPD", "", State::kPartial, "r", {"a", "b"}},
                   vpd};
  EXPECT_EQ(
      "Steps that failed:\n"
      "  KRXSG_Vpd, KRXSG_PostBIOSVPD\n"
      "    a\n"
      "    b\n"
      "  KRXSG_DiagnosticVPD\n"
      "    b\n",
      whyText(result, {}));
  EXPECT_EQ(
      "Steps that failed:\n"
      "  KRXSG_Vpd,\n"
      "  KRXSG_PostBIOSVPD\n"
      "    a\n"
      "    b\n"
      "  KRXSG_DiagnosticVPD\n"
      "    b\n",
      whyText(result, {.width = 28}));
}

}  // namespace
}  // namespace velhost
