// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/namespacespy.h"
#include "tests/support/nullhandles.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {

using namespace collector::test;
namespace {

using namespace NKRXVEL20;
using host::CimOperation;

const Log::value_type kNone = {3, "spfirmwarevpd: There is no KRXSG_IPMIFRU instance."};
const Log::value_type kOne = {3, "spfirmwarevpd: There is one KRXSG_IPMIFRU instance."};
const Log::value_type kUnread = {3, "spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU"};

class IpmiFruTest : public PluginTest {
 protected:
  void useBmc(bool bmc, bool ipmiDrivers) {
    SimulatedSP machine;
    machine.bmc = bmc;
    machine.ipmiDrivers = ipmiDrivers;
    useSP(machine);
  }

  void addFrus(int count) {
    for (int i = 0; i < count; ++i) ns->addCompanion("KRXSG_IPMIFRU", {});
  }
};

TEST_F(IpmiFruTest, BmcWithIpmiDriversIsASourceWithoutAnyQueryOrLogLine) {
  useBmc(true, true);
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  plugin.DetermineIPMIFRUExist(spy);
  EXPECT_TRUE(plugin.ipmiFruExists);
  EXPECT_TRUE(plugin.ipmiFruProbed);
  EXPECT_EQ(spy->takeCalls(), Calls{});
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(failureLog, Log{});
}

TEST_F(IpmiFruTest, OtherwiseTheInstancesAreCounted) {
  const struct {
    bool bmc;
    bool ipmiDrivers;
  } machines[] = {{false, false}, {true, false}, {false, true}};
  const struct {
    int count;
    bool exists;
    Log::value_type expected;
  } cases[] = {
      {0, false, kNone},
      {1, true, kOne},
      {2, true, {3, "spfirmwarevpd: There are 2 KRXSG_IPMIFRU instances."}},
      {12, true, {3, "spfirmwarevpd: There are 12 KRXSG_IPMIFRU instances."}},
  };
  for (const auto& machine : machines) {
    for (const auto& c : cases) {
      useBmc(machine.bmc, machine.ipmiDrivers);
      useFaults({});
      addFrus(c.count);
      plugin.ipmiFruExists = !c.exists;  // an earlier answer does not stay
      plugin.ipmiFruProbed = false;
      plugin.DetermineIPMIFRUExist(ns);
      EXPECT_EQ(plugin.ipmiFruExists, c.exists) << c.count;
      EXPECT_TRUE(plugin.ipmiFruProbed) << c.count;
      EXPECT_EQ(takeLog(), (Log{c.expected}));
    }
  }
  EXPECT_EQ(failureLog, Log{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(IpmiFruTest, ClassIsLookedUpAsAPluginAndReadOnce) {
  addFrus(2);
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  plugin.DetermineIPMIFRUExist(spy);
  EXPECT_EQ(spy->takeCalls(), (Calls{"get KRXSG_IPMIFRU as a plug-in", "enumerate KRXSG_IPMIFRU"}));
}

TEST_F(IpmiFruTest, MissingSPLibraryIsReportedAndKeepsTheAnswer) {
  host::setSPLibrary(nullptr);
  for (const bool earlier : {false, true}) {
    plugin.ipmiFruExists = earlier;
    plugin.ipmiFruProbed = false;
    plugin.DetermineIPMIFRUExist(ns);
    EXPECT_EQ(plugin.ipmiFruExists, earlier);
    EXPECT_TRUE(plugin.ipmiFruProbed);
    EXPECT_EQ(takeLog(), Log{});
    EXPECT_EQ(std::exchange(failureLog, {}), (Log{{1, "Could not load SPLibrary."}}));
  }
}

TEST_F(IpmiFruTest, MissingSPLibraryIsNotLookedForAgainByTheRequest) {
  plugin.Init();
  host::setSPLibrary(nullptr);
  plugin.DetermineIPMIFRUExist(ns);
  EXPECT_FALSE(plugin.ipmiFruExists);
  useSP({});
  addFrus(1);
  std::vector<boost::shared_ptr<ICIMClass>> noClasses;
  plugin.GetData(ns, noClasses);
  EXPECT_FALSE(plugin.ipmiFruExists);
  EXPECT_EQ(std::ranges::count(log, kOne), 0);
  EXPECT_EQ(failureLog, (Log{{1, "Could not load SPLibrary."}}));
}

TEST_F(IpmiFruTest, FailureOfTheFrameworkIsLoggedAndKeepsTheAnswer) {
  const auto failing = [](CimOperation operation) {
    return boost::make_shared<host::CimNamespace>(
        std::vector<std::string>{}, std::vector<Fault>{{.operation = operation,
                                                        .className = "KRXSG_IPMIFRU",
                                                        .propertyName = {},
                                                        .nth = std::nullopt,
                                                        .throwsRuntimeError = false}});
  };
  const struct {
    const char* what;
    boost::shared_ptr<host::CimNamespace> ns;
  } cases[] = {
      {"class missing", boost::make_shared<host::CimNamespace>(
                            std::vector<std::string>{"KRXSG_IPMIFRU"}, std::vector<Fault>{})},
      {"class lookup", failing(CimOperation::kGetClass)},
      {"enumeration", failing(CimOperation::kEnumerateInstances)},
      {"null namespace", nullptr},
  };
  for (const auto& c : cases) {
    for (const bool earlier : {false, true}) {
      plugin.ipmiFruExists = earlier;
      plugin.ipmiFruProbed = false;
      plugin.DetermineIPMIFRUExist(c.ns);
      EXPECT_EQ(plugin.ipmiFruExists, earlier) << c.what;
      EXPECT_TRUE(plugin.ipmiFruProbed) << c.what;
      EXPECT_EQ(takeLog(), (Log{kUnread})) << c.what;
    }
  }
  EXPECT_EQ(failureLog, Log{});
}

// A null class ends in the assertion, whose exception is the framework's: it is no empty class.
TEST_F(IpmiFruTest, NullClassIsAFailureAndKeepsTheAnswer) {
  for (const bool earlier : {false, true}) {
    plugin.ipmiFruExists = earlier;
    plugin.DetermineIPMIFRUExist(boost::make_shared<NullClassNamespace>());
    EXPECT_EQ(plugin.ipmiFruExists, earlier);
    EXPECT_EQ(takeLog(), (Log{kUnread}));
  }
}

// Only the queries of the namespace are caught.
TEST_F(IpmiFruTest, ExceptionOfTheDriverPassesAndTheProbeIsDone) {
  const auto gone = testing::Throw(TVELException(kErrorAssertion, "the driver is gone"));
  for (const bool driversKnown : {false, true}) {
    auto library = std::make_unique<testing::NiceMock<MockSPLibrary>>();
    ON_CALL(*library, IsIPMIDriversPresent).WillByDefault(testing::Return(true));
    if (driversKnown) {
      ON_CALL(*library, IsBMCMachine).WillByDefault(gone);
    } else {
      ON_CALL(*library, IsIPMIDriversPresent).WillByDefault(gone);
    }
    host::setSPLibrary(std::move(library));
    plugin.ipmiFruProbed = false;
    EXPECT_THROW(plugin.DetermineIPMIFRUExist(ns), TVELException) << driversKnown;
    EXPECT_TRUE(plugin.ipmiFruProbed) << driversKnown;
    EXPECT_FALSE(plugin.ipmiFruExists) << driversKnown;
    EXPECT_EQ(log, Log{}) << driversKnown;
  }
}

TEST_F(IpmiFruTest, OtherExceptionsPassAndTheProbeIsDone) {
  for (const auto operation : {CimOperation::kGetClass, CimOperation::kEnumerateInstances}) {
    useFaults({{.operation = operation,
                .className = {},
                .propertyName = {},
                .nth = std::nullopt,
                .throwsRuntimeError = true}});
    plugin.ipmiFruProbed = false;
    EXPECT_THROW(plugin.DetermineIPMIFRUExist(ns), std::runtime_error);
    EXPECT_TRUE(plugin.ipmiFruProbed);
    EXPECT_FALSE(plugin.ipmiFruExists);
    EXPECT_EQ(log, Log{});
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
