// SPDX-License-Identifier: Apache-2.0
#include "host/formats/nodefilter.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

// A BIOS of nodes 1 and 2, a component of node 2, and one of no particular node.
QueryResult nodesResult() {
  QueryResult result = sampleResult();
  result.instances.push_back({"KRXSG_Vpd", {{"Name", TCIMValue("DIMM 7")}}});
  return result;
}

std::vector<std::string> namesIn(const QueryResult& result) {
  std::vector<std::string> names;
  for (const auto& instance : result.instances) {
    for (const auto& [name, value] : instance.properties) {
      if (name == "Name") names.push_back(value.ToString());
    }
  }
  return names;
}

std::vector<std::string> statesIn(const QueryResult& result) {
  std::vector<std::string> states;
  for (const ClassState& s : result.states) {
    states.push_back(s.className + ": " + std::string(stateName(s.state)) + ", " + s.reason);
  }
  return states;
}

using Texts = std::vector<std::string>;

TEST(NodeFilter, KeepsTheInstancesOfTheNode) {
  QueryResult result = nodesResult();
  const Texts states = statesIn(result);
  keepNode(2, result);
  EXPECT_EQ(Texts({"Node 2 : UEFI", "Node 2: DIMM 1"}), namesIn(result));
  EXPECT_EQ(states, statesIn(result));
}

TEST(NodeFilter, AClassThatKeepsNoneIsAbsent) {
  QueryResult result = nodesResult();
  keepNode(1, result);
  EXPECT_EQ(Texts({"Node 1 : UEFI"}), namesIn(result));
  EXPECT_EQ(Texts({
                "KRXSG_SystemBIOSElement: present, ",
                "KRXSG_Vpd: absent, node 1 has none; slot 2 is empty, as its \"type\" says",
                "KRXSG_cKVM: absent, no cKVM device, by the machine type",
                "KRXSG_DeviceDriver: unused, ",
            }),
            statesIn(result));
}

TEST(NodeFilter, ANodeThatIsNotThereIsTold) {
  EXPECT_EQ("", missingNode(1, nodesResult()));
  EXPECT_EQ("the answer has no node 3, only 1 to 2", missingNode(3, nodesResult()));
  EXPECT_EQ("the answer has no node 3, nor any other", missingNode(3, QueryResult()));
  QueryResult result;
  for (const unsigned node : {5U, 1U, 9U, 2U, 3U, 5U}) {
    result.instances.push_back(
        {kBios, {{"SourceNode", TCIMValue(static_cast<std::uint8_t>(node))}}});
  }
  EXPECT_EQ("the answer has no node 4, only 1 to 3, 5, 9", missingNode(4, result));
}

}  // namespace
}  // namespace velhost
