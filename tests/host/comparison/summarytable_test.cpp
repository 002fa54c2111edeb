// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "host/comparison/summarytext.h"

namespace velhost {
namespace {

Holders holders(std::size_t machines, std::vector<Holder> named) {
  return {machines, machines, std::move(named)};
}

Holder holder(const char* label, std::vector<std::uint64_t> nodes = {}) {
  return {label, "file", std::move(nodes), label};
}

TEST(SummaryTable, TellsModelByModelWhoHasWhat) {
  LevelSummary summary;
  summary.machines = 5;
  summary.elements = {
      {"", "KRXSG_SystemBIOSElement", "", {{"", "", holders(1, {holder("srv0")})}}},
      {"5020AC1",
       "KRXSG_SystemBIOSElement",
       "UEFI",
       {{"104", "B",
         holders(5, {holder("srv1", {1}), holder("srv2", {1, 2}), holder("srv3"), holder("srv4")})},
        {"", "A", holders(1, {holder("srv5")}), true},
        {"", "", holders(1, {holder("srv6")})}}},
  };
  summary.untold = {
      {"4000", "KRXSG_cKVM", State::kFailed, holders(1, {holder("srv7")})},
      {"5020AC1", "KRXSG_cKVM", State::kUnanswered, holders(2, {holder("srv8"), holder("srv9")})},
  };
  EXPECT_EQ(
      "Model not told\n"
      "  KRXSG_SystemBIOSElement: no level told, 1 machine\n"
      "\n"
      "4000\n"
      "  KRXSG_cKVM: failed, 1 machine: srv7\n"
      "\n"
      "5020AC1\n"
      "  KRXSG_SystemBIOSElement, UEFI\n"
      "         104 (build B), 5 machines: srv1 (node 1); srv2 (nodes 1, 2); srv3 and 2\n"
      "         more\n"
      "    odd  build A, 1 machine: srv5\n"
      "         no level told, 1 machine: srv6\n"
      "  KRXSG_cKVM: unanswered, 2 machines: srv8; srv9\n"
      "\n"
      "5 machines, 1 odd level.\n",
      summaryTable(summary, 0, 80));
}

TEST(SummaryTable, TellsFilesThatCouldNotBeRead) {
  EXPECT_EQ("0 machines, 0 odd levels; 1 file could not be read.\n", summaryTable({}, 1, 80));
  EXPECT_EQ("0 machines, 0 odd levels; 2 files could not be read.\n", summaryTable({}, 2, 80));
}

}  // namespace
}  // namespace velhost
