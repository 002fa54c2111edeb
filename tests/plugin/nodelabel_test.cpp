// SPDX-License-Identifier: Apache-2.0
#include "plugin/nodelabel.h"

#include <gtest/gtest.h>

namespace spfirmwarevpd {
namespace {

TEST(NodeLabelTest, NodesAreMarkedByTheirNumbers) {
  EXPECT_EQ("Node 2", nodeLabel(2));
  EXPECT_EQ("Node 10 : UEFI", nodeElementName(10, "UEFI"));
  EXPECT_EQ("Node 1 : UEFI", nodeElementName("1", "UEFI"));
}

}  // namespace
}  // namespace spfirmwarevpd
