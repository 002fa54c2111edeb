// SPDX-License-Identifier: Apache-2.0
#include "plugin/ciminstance.h"

#include <functional>

#include "plugin/textfields.h"
#include "tests/support/nullhandles.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

class CimInstanceTest : public PluginTest {};

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
  const TextField fields[] = {{"Name", 0, 1, "first field"}, {"Vendor", 0, 1, "second field"}};
  EXPECT_FALSE(setTextFields(*instance, fields, Bytes{'N'}));
  EXPECT_EQ(takeLog(), (Log{{0, "first field"}}));
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
  const TextField fields[] = {{"Name", 0, 1, "field"}};
  const Bytes record = {'N'};
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
      {"fields", CimOperation::kSetProperty,
       [&] { setTextFields(create().value(), fields, record); }},
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

TEST_F(CimInstanceTest, TextFieldsAreSetInTheOrderOfTheirRows) {
  const auto instance = createInstance(ns, "KRXSG_Vpd", "text").value();
  const TextField fields[] = {{"Vendor", 2, 2, "refused"},
                              {"Name", 0, 2, "refused"},
                              {"Location", 4, 1, "refused", Empty::kSpace},
                              {"PartNumber", 4, 1, "refused"}};
  const Bytes record = {'N', 'a', 'V', 'e', 0};
  EXPECT_TRUE(setTextFields(instance, fields, record));
  EXPECT_EQ(published({instance}),
            (std::vector<Properties>{{"Vendor=Ve", "Name=Na", "Location= ", "PartNumber="}}));
}

TEST(CutTextTest, EndsAtTheFirstZeroByteOrTheFieldsOrTheRecordsEnd) {
  const Bytes record = {'a', 'b', 0, 'c', 'd'};
  const struct {
    const char* what;
    std::size_t offset;
    std::size_t length;
    const char* text;
  } cases[] = {
      {"whole field", 0, 2, "ab"},         {"zero byte inside", 0, 4, "ab"},
      {"zero byte first", 2, 3, ""},       {"last bytes", 3, 2, "cd"},
      {"length past the end", 3, 9, "cd"}, {"offset at the end", 5, 1, ""},
      {"offset past the end", 9, 1, ""},   {"no length", 0, 0, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(cutText(record, c.offset, c.length), c.text) << c.what;
}

TEST(TextFieldTest, RowsPastTheRecordAreSeen) {
  constexpr TextField kFields[] = {{"Name", 2, 4, "refused"}};
  static_assert(allWithin(kFields, 6));
  static_assert(!allWithin(kFields, 5));
  EXPECT_TRUE(allWithin(kFields, 6));
}

}  // namespace
}  // namespace spfirmwarevpd::test
