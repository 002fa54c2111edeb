// SPDX-License-Identifier: Apache-2.0
//
// Whether the random machines have what the properties are about.
#include "tests/properties/randommachine.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/properties/machinerun.h"

namespace velhost::properties {
namespace {

constexpr int kMachines = 400;
constexpr int kSize = 100;  // of the largest cases

std::string machineText(int seed, Framework framework) {
  return randomMachine(framework)(rc::Random(static_cast<std::uint64_t>(seed)), kSize).value().text;
}

TEST(RandomMachines, HaveInstancesOfEveryClassThatIsFilledFromThem) {
  std::set<std::string> seen;
  for (int seed = 0; seed < kMachines; ++seed) {
    const QueryResult result = queried(machineText(seed, Framework::kSound)).results.front();
    for (const auto& instance : result.instances) seen.insert(instance.className);
  }
  const std::set<std::string> filled = {"KRXSG_ComputerSystem",
                                        "KRXSG_DiagnosticVPD",
                                        "KRXSG_HardwareRevisionLevel",
                                        "KRXSG_IPMIFRU",
                                        "KRXSG_ManagementController",
                                        "KRXSG_PhysicalMemory",
                                        "KRXSG_SPROMFirmwareVPDBootROM",
                                        "KRXSG_SPROMFirmwareVPDMain",
                                        "KRXSG_SystemBIOSElement",
                                        "KRXSG_SystemFirmware",
                                        "KRXSG_Vpd",
                                        "KRXSG_cKVM"};
  EXPECT_EQ(filled, seen);
}

TEST(RandomMachines, MostlyHaveValuesThatRedactionTakesOut) {
  int redacted = 0;
  for (int seed = 0; seed < kMachines; ++seed) {
    const std::string machine = machineText(seed, Framework::kSound);
    redacted += recorded(machine) != recorded(machine, true) ? 1 : 0;
  }
  EXPECT_GT(redacted, kMachines / 2);
}

TEST(RandomMachines, SometimesEndTheRequestWithAnException) {
  int ended = 0;
  for (int seed = 0; seed < kMachines; ++seed) {
    ended += queried(machineText(seed, Framework::kSometimesFails)).results.front().error ? 1 : 0;
    EXPECT_FALSE(queried(machineText(seed, Framework::kSound)).results.front().error);
  }
  EXPECT_GT(ended, 0);
}

}  // namespace
}  // namespace velhost::properties
