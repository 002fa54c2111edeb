// SPDX-License-Identifier: Apache-2.0
#include "host/text/datetext.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(DateText, IsAsPeopleWriteDates) {
  const struct {
    const char* cim;
    const char* shown;
  } cases[] = {
      {"20070315000000.000000+000", "2007-03-15"},
      {"20070315123059.000000+000", "2007-03-15 12:30:59"},
      {"20070315123059.000000+060", "20070315123059.000000+060"},
      {"20070315123059.000001+000", "20070315123059.000001+000"},
      {"00000000000000.000000+000", ""},
      {"00000000123059.000000+000", "00000000123059.000000+000"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.shown, dateText(c.cim));
}

}  // namespace
}  // namespace velhost
