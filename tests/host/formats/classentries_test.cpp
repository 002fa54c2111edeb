// SPDX-License-Identifier: Apache-2.0
#include "host/formats/classentries.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

using Shape = std::vector<std::pair<std::string, std::size_t>>;

Shape shapeOf(const QueryResult& result) {
  Shape shape;
  for (const auto& [state, instances] : classEntries(result)) {
    shape.emplace_back(state->className, instances.size());
  }
  return shape;
}

TEST(ClassEntries, AreTheRequestedClassesInOrderWithTheirInstances) {
  QueryResult result = sampleResult();
  result.instances.push_back(unasked());
  EXPECT_EQ((Shape{{kBios, 2}, {"KRXSG_Vpd", 1}, {"KRXSG_cKVM", 0}, {"KRXSG_DeviceDriver", 0}}),
            shapeOf(result));
}

TEST(ClassEntries, AClassNamedTwiceHasOneWhereItIsNamedFirst) {
  QueryResult result = sampleResult();
  result.requested.emplace_back(kBios);
  result.states.push_back(result.states.front());
  EXPECT_EQ((Shape{{kBios, 2}, {"KRXSG_Vpd", 1}, {"KRXSG_cKVM", 0}, {"KRXSG_DeviceDriver", 0}}),
            shapeOf(result));
}

TEST(ClassEntries, AClassWithoutAStateIsAnError) {
  QueryResult result = sampleResult();
  result.states.erase(result.states.begin() + 2);
  try {
    classEntries(result);
    FAIL() << "a state was made up";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ("nothing tells the state of KRXSG_cKVM", error.what());
  }
}

TEST(ClassEntries, NothingRequestedIsNothing) { EXPECT_EQ(Shape(), shapeOf({})); }

}  // namespace
}  // namespace velhost
