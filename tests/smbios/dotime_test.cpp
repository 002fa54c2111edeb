// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

class DoTimeTest : public PluginTest {
 protected:
  DoTimeTest() : instance(ns->GetClass("KRXSG_SystemBIOSElement", {})->CreateInstance()) {}

  int doTime(const std::string& date, bool noSet = false) {
    return plugin.doTime(instance, "ReleaseDate", date, value, noSet).status;
  }

  SPFirmwareVpd::InstanceHandle instance;
  TCIMDateTime value{"19991231000000.000000+000"};
};

TEST_F(DoTimeTest, DatesOfEveryFormAreSet) {
  const struct {
    const char* date;
    const char* timestamp;
  } cases[] = {
      {"03/15/07", "20070315000000.000000+000"},   {"12/31/51", "19511231000000.000000+000"},
      {"01/01/50", "20500101000000.000000+000"},   {"2009-07-14", "20090714000000.000000+000"},
      {"07-14-2009", "20090714000000.000000+000"}, {"07/14/2009", "20090714000000.000000+000"},
      {"02/29/2008", "20080229000000.000000+000"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(doTime(c.date), 0) << c.date;
    EXPECT_EQ(value.ToString(), c.timestamp) << c.date;
    EXPECT_EQ(published({instance}),
              (std::vector<Properties>{{std::string("ReleaseDate=") + c.timestamp}}))
        << c.date;
  }
  EXPECT_EQ(log, Log{});
}

TEST_F(DoTimeTest, TextsOfOtherLengthsSetNothing) {
  for (const char* date : {"", "03/15/207", "2009-07-14T"}) {
    EXPECT_EQ(doTime(date), 0) << date;
    EXPECT_EQ(published({instance}), (std::vector<Properties>{{}})) << date;
  }
  EXPECT_EQ(value.ToString(), "19991231000000.000000+000");
}

TEST_F(DoTimeTest, HyphenInNoKnownPlaceSetsTheValueAsItCame) {
  EXPECT_EQ(doTime("2009.07-14"), 0);
  EXPECT_EQ(published({instance}),
            (std::vector<Properties>{{"ReleaseDate=19991231000000.000000+000"}}));
}

TEST_F(DoTimeTest, DatesThatDoNotExistAreLoggedAndNotSet) {
  for (const char* date : {"02/30/2009", "13/01/2009", "2009/07/14", "00/00/00"}) {
    EXPECT_EQ(doTime(date), 3) << date;
    EXPECT_EQ(takeLog(), (Log{{0, "Error Setting DateTime.."}})) << date;
  }
  EXPECT_EQ(published({instance}), (std::vector<Properties>{{}}));
  EXPECT_EQ(value.ToString(), "19991231000000.000000+000");
}

TEST_F(DoTimeTest, NoSetLeavesTheInstanceAlone) {
  instance.reset();  // not even looked at
  EXPECT_EQ(doTime("2009-07-14", true), 0);
  EXPECT_EQ(value.ToString(), "20090714000000.000000+000");
}

TEST_F(DoTimeTest, RefusalNamesBuildDateWhateverTheProperty) {
  EXPECT_EQ(plugin.doTime(instance, "NoSuchProperty", "2009-07-14", value, false).status, 3);
  EXPECT_EQ(log, (Log{{0, "Error adding BuildDate property"}}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
