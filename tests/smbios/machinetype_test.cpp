// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

class MachineTypeTest : public PluginTest {};

TEST_F(MachineTypeTest, IsTakenFromTheFrameworkAndTraced) {
  for (const char* machine : {"5010", ""}) {
    host::setMachineType(machine);
    std::string type = "before";
    EXPECT_EQ(plugin.getMachineType(&type).status, 0);
    EXPECT_EQ(type, machine);
    EXPECT_EQ(takeLog(),
              (Log{{3, "getMachineType() entered."}, {3, "getMachineType() completed."}}));
  }
}

TEST_F(MachineTypeTest, EveryListedCodeIsAcKVMMachine) {
  for (const char* machine : {"3105", "3110", "3220", "3225", "3340", "3345", "3450", "3455",
                              "3560", "3565", "3670", "3675"}) {
    EXPECT_TRUE(plugin.IscKVMMachine(machine)) << machine;
  }
}

TEST_F(MachineTypeTest, OtherCodesAreNot) {
  const struct {
    const char* what;
    const char* machine;
    bool iscKVM;
  } cases[] = {
      {"three digits shared", "3106", false},
      {"three digits shared, shifted", "1053", false},
      {"empty", "", false},
      {"a listed code inside a longer type", "X3105AC1", true},
      {"the text of an unreadable type", "No (global) machine type found.", false},
  };
  for (const auto& c : cases) EXPECT_EQ(plugin.IscKVMMachine(c.machine), c.iscKVM) << c.what;
}

}  // namespace
}  // namespace spfirmwarevpd::test
