// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"

#include <functional>

#include "tests/support/frameworkfixture.h"
#include "tests/support/nullhandles.h"
#include "vel/exception.h"

namespace collector::test {
namespace {

using namespace NKRXVEL20;

class CimInstanceTest : public FrameworkTest {};

TEST_F(CimInstanceTest, ClassIsLookedUpAsAPlugin) {
  EXPECT_EQ(pluginContext(), (TCIMValueMap{{TCIMSchemaHelper::kContextName,
                                            TCIMValue(TCIMSchemaHelper::kPluginNSPName)}}));
}

TEST_F(CimInstanceTest, EveryRefusalToCreateIsLoggedWithItsSubject) {
  const struct {
    const char* what;
    NamespaceHandle ns;
  } cases[] = {
      {"class not there", boost::make_shared<host::CimNamespace>(
                              std::vector<std::string>{"KRXSG_Vpd"}, std::vector<Fault>{})},
      {"null class", boost::make_shared<NullClassNamespace>()},
      {"null namespace", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(createInstance(c.ns, "KRXSG_Vpd", {"Error adding Class ", "KRXSG_Vpd"}), std::nullopt)
        << c.what;
    EXPECT_EQ(takeLog(), (Log{{0, "Error adding Class KRXSG_Vpd"}})) << c.what;
  }
}

// A null instance is refused where its first property is set, not where it is created.
TEST_F(CimInstanceTest, NullInstanceIsHandedOutAndRefusedAtItsFirstProperty) {
  const auto instance =
      createInstance(boost::make_shared<NullInstanceNamespace>(), "KRXSG_Vpd", "not logged");
  ASSERT_TRUE(instance.has_value());
  EXPECT_EQ(*instance, nullptr);
  EXPECT_EQ(log, Log{});
  EXPECT_FALSE(setProperty(*instance, "Name", TCIMValue("n"), {"Error adding ", "Name"}));
  EXPECT_EQ(takeLog(), (Log{{0, "Error adding Name"}}));
  const PropertyRow rows[] = {{"Name", TCIMValue("n"), "first"},
                              {"Vendor", TCIMValue("v"), "second"}};
  EXPECT_FALSE(setProperties(*instance, rows));
  EXPECT_EQ(takeLog(), (Log{{0, "first"}}));
}

std::string thrownBy(const std::function<void()>& call) {
  try {
    call();
    return "nothing";
  } catch (const TVELException&) {
    return "TVELException";
  } catch (const std::exception&) {
    return "another exception";
  }
}

TEST_F(CimInstanceTest, OtherExceptionsPass) {
  using host::CimOperation;
  const auto create = [&] { return createInstance(ns, "KRXSG_Vpd", "text"); };
  const PropertyRow rows[] = {{"Name", TCIMValue("n"), "row"}};
  const struct {
    const char* what;
    CimOperation operation;
    std::function<void()> call;
  } cases[] = {
      {"class lookup", CimOperation::kGetClass, create},
      {"creation", CimOperation::kCreateInstance, create},
      {"property", CimOperation::kSetProperty,
       [&] { setProperty(create().value(), "Name", TCIMValue("n"), "property"); }},
      {"rows", CimOperation::kSetProperty, [&] { setProperties(create().value(), rows); }},
      {"lookup before the enumeration", CimOperation::kGetClass,
       [&] { enumerateInstances(ns, "KRXSG_IPMIFRU", {}); }},
      {"enumeration", CimOperation::kEnumerateInstances,
       [&] { enumerateInstances(ns, "KRXSG_IPMIFRU", {}); }},
  };
  for (const auto& c : cases) {
    useFaults({{.operation = c.operation,
                .className = {},
                .propertyName = {},
                .nth = std::nullopt,
                .throwsRuntimeError = true}});
    EXPECT_EQ(thrownBy(c.call), "another exception") << c.what;
    EXPECT_EQ(log, Log{}) << c.what;
  }
}

// Each caller decides what it catches.
TEST_F(CimInstanceTest, EnumerationPassesTheFrameworksOwnException) {
  const struct {
    const char* what;
    NamespaceHandle ns;
  } cases[] = {
      {"class not there", boost::make_shared<host::CimNamespace>(
                              std::vector<std::string>{"KRXSG_IPMIFRU"}, std::vector<Fault>{})},
      {"null class", boost::make_shared<NullClassNamespace>()},
      {"null namespace", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_THROW(enumerateInstances(c.ns, "KRXSG_IPMIFRU", {}), TVELException) << c.what;
  }
  EXPECT_EQ(log, Log{});
}

TEST_F(CimInstanceTest, RefusedPropertyIsLogged) {
  const auto instance = createInstance(ns, "KRXSG_Vpd", "text").value();
  EXPECT_FALSE(setProperty(instance, "NoSuchProperty", TCIMValue("v"), "unknown name"));
  EXPECT_FALSE(setProperty(instance, "Name", TCIMValue(true), "wrong type"));
  EXPECT_FALSE(setProperty(nullptr, "Name", TCIMValue("v"), "null instance"));
  EXPECT_TRUE(setProperty(instance, "Name", TCIMValue("v"), "not logged"));
  EXPECT_EQ(log, (Log{{0, "unknown name"}, {0, "wrong type"}, {0, "null instance"}}));
}

TEST_F(CimInstanceTest, FirstRefusalEndsTheRows) {
  const auto instance = createInstance(ns, "KRXSG_Vpd", "text").value();
  const PropertyRow rows[] = {{"Name", TCIMValue("n"), "first"},
                              {"Vendor", TCIMValue(true), "second"},
                              {"Location", TCIMValue("l"), "third"}};
  EXPECT_FALSE(setProperties(instance, rows));
  EXPECT_EQ(log, (Log{{0, "second"}}));
  EXPECT_EQ(published({instance}), (std::vector<Properties>{{"Name=n"}}));
}

}  // namespace
}  // namespace collector::test
