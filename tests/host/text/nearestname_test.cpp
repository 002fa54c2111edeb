// SPDX-License-Identifier: Apache-2.0
#include "host/text/nearestname.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

constexpr std::string_view kNames[] = {"KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_SystemBIOS",
                                       "KRXSG_SystemBIOSElement", "KRXSG_IPMIFRU"};

TEST(NearestName, IsWhatTheWordIsASlipOf) {
  const struct {
    const char* what;
    std::string word;
    const char* expected;
  } cases[] = {
      {"the name itself", "KRXSG_Vpd", "KRXSG_Vpd"},
      {"another case", "krxsg_ckvm", "KRXSG_cKVM"},
      {"a letter too few", "KRXSG_Vd", "KRXSG_Vpd"},
      {"a letter too many", "KRXSG_Vppd", "KRXSG_Vpd"},
      {"a wrong letter", "KRXSG-Vpd", "KRXSG_Vpd"},
      {"neighbours exchanged", "KRXGS_SystemBIOSElement", "KRXSG_SystemBIOSElement"},
      {"two slips", "KRSG_Vdp", "KRXSG_Vpd"},
      {"the end alone", "SystemBIOS", "KRXSG_SystemBIOS"},
      {"the end alone in another case", "vpd", "KRXSG_Vpd"},
      {"the nearest of two", "KRXSG_SystemBIOSElemnt", "KRXSG_SystemBIOSElement"},
      {"an end that is too short", "pd", ""},
      {"something else", "elephants", ""},
      {"nothing", "", ""},
      {"65 letters", std::string(56, 'x') + "KRXSG_Vpd", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.expected, nearestName(c.word, kNames)) << c.what;
}

TEST(NearestName, OfSeveralTheFirst) {
  constexpr std::string_view kAlike[] = {"ax", "ay"};
  EXPECT_EQ("ax", nearestName("az", kAlike));
  EXPECT_EQ("", nearestName("az", {}));
}

TEST(NearestName, IsAskedForInAHalfSentence) {
  EXPECT_EQ("; did you mean KRXSG_Vpd?", suggestion("vpd", kNames));
  EXPECT_EQ("", suggestion("elephants", kNames));
}

}  // namespace
}  // namespace velhost
