// SPDX-License-Identifier: Apache-2.0
#include <string_view>
#include <vector>

#include "smbios/machinetypes.h"
#include "tests/support/pluginfixture.h"
#include "velhost/schema.h"

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

// The host tells by the schema why other machines have no such instance.
TEST_F(MachineTypeTest, TheSchemaNamesTheSameMachines) {
  std::vector<std::string_view> types;
  for (const auto& qualifier : host::findClass("KRXSG_cKVM")->qualifiers) {
    if (qualifier.declaration->name != "MachineTypes") continue;
    types.assign(qualifier.values.begin(), qualifier.values.end());
  }
  EXPECT_EQ(types, std::vector(kcKVMMachines.begin(), kcKVMMachines.end()));
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
