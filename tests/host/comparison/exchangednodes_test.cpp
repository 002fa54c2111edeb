// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/exchangednodes.h"

#include <gtest/gtest.h>

#include "tests/host/comparison/comparisonsample.h"

namespace velhost {
namespace {

struct Part {
  const char* name;
  const char* serial;
};

QueryResult resultWith(const std::vector<Part>& parts) {
  std::vector<PropertyList> instances;
  for (const Part& part : parts) instances.push_back(dimm(part.name, part.serial));
  return findingsWith("KRXSG_Vpd", instances).result;
}

TEST(ExchangedNodes, SerialNumbersTellThem) {
  const struct {
    const char* what;
    std::vector<Part> before;
    std::vector<Part> after;
    NodeMap nodes;
  } cases[] = {
      {"nothing", {}, {}, {}},
      {"as they were",
       {{"Node 1: A", "1"}, {"Node 2: A", "2"}},
       {{"Node 1: A", "1"}, {"Node 2: A", "2"}},
       {}},
      {"two exchanged",
       {{"Node 1: A", "1"}, {"Node 2: A", "2"}},
       {{"Node 1: A", "2"}, {"Node 2: A", "1"}},
       {{1, 2}, {2, 1}}},
      {"three in a ring",
       {{"Node 1: A", "1"}, {"Node 2: A", "2"}, {"Node 3: A", "3"}},
       {{"Node 1: A", "2"}, {"Node 2: A", "3"}, {"Node 3: A", "1"}},
       {{1, 2}, {2, 3}, {3, 1}}},
      {"a part that went to the other node is outvoted",
       {{"Node 1: A", "1"}, {"Node 1: B", "2"}, {"Node 1: C", "3"}, {"Node 2: A", "4"}},
       {{"Node 1: A", "1"},
        {"Node 1: B", "2"},
        {"Node 2: C", "3"},
        {"Node 2: A", "4"},
        {"Node 2: B", "5"}},
       {}},
      {"a number that both have tells nothing",
       {{"Node 1: A", "1"}, {"Node 2: A", "1"}},
       {{"Node 1: A", "1"}, {"Node 2: A", "1"}},
       {}},
      {"a node that was replaced: of the other nothing follows",
       {{"Node 1: A", "1"}, {"Node 2: A", "2"}},
       {{"Node 1: A", "2"}, {"Node 2: A", "3"}},
       {}},
      {"blank numbers", {{"Node 1: A", " "}, {"Node 2: A", ""}}, {{"Node 2: A", " "}}, {}},
      {"parts of no node", {{"A", "1"}, {"B", "2"}}, {{"A", "2"}, {"B", "1"}}, {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.nodes, exchangedNodes(resultWith(c.before), resultWith(c.after))) << c.what;
  }
}

}  // namespace
}  // namespace velhost
