// SPDX-License-Identifier: Apache-2.0
#include "plugin/textfields.h"

#include <stdexcept>

#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace collector;

class TextFieldsTest : public PluginTest {};

// A null instance is refused where its first property is set, not where it is created.
TEST_F(TextFieldsTest, NullInstanceIsRefusedAtItsFirstField) {
  const TextField fields[] = {{"Name", 0, 1, "first field"}, {"Vendor", 0, 1, "second field"}};
  EXPECT_FALSE(setTextFields(nullptr, fields, Bytes{'N'}));
  EXPECT_EQ(takeLog(), (Log{{0, "first field"}}));
}

TEST_F(TextFieldsTest, FirstRefusalEndsTheRows) {
  refuseProperty("Vendor");
  const auto instance = createInstance(ns, "KRXSG_Vpd", "text").value();
  const TextField fields[] = {
      {"Name", 0, 1, "first"}, {"Vendor", 0, 1, "second"}, {"Location", 0, 1, "third"}};
  EXPECT_FALSE(setTextFields(instance, fields, Bytes{'N'}));
  EXPECT_EQ(log, (Log{{0, "second"}}));
  EXPECT_EQ(published({instance}), (std::vector<Properties>{{"Name=N"}}));
}

TEST_F(TextFieldsTest, OtherExceptionsPass) {
  useFaults({{.operation = NKRXVEL20::host::CimOperation::kSetProperty,
              .className = {},
              .propertyName = {},
              .nth = std::nullopt,
              .throwsRuntimeError = true}});
  const auto instance = createInstance(ns, "KRXSG_Vpd", "text").value();
  const TextField fields[] = {{"Name", 0, 1, "field"}};
  EXPECT_THROW(setTextFields(instance, fields, Bytes{'N'}), std::runtime_error);
  EXPECT_EQ(log, Log{});
}

TEST_F(TextFieldsTest, TextFieldsAreSetInTheOrderOfTheirRows) {
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
  const std::vector<TextField> fields = {{"Name", 2, 4, "refused"}, {"Vendor", 0, 7, "refused"}};
  EXPECT_TRUE(allWithin({}, 0));
  EXPECT_FALSE(allWithin(fields, 6));
  EXPECT_TRUE(allWithin(fields, 7));
}

}  // namespace
}  // namespace spfirmwarevpd::test
