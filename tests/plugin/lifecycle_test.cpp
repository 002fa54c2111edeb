// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

class LifecycleTest : public PluginTest {};

TEST_F(LifecycleTest, NameIsUpperCaseAtItsEnd) { EXPECT_EQ(plugin.GetName(), "SPFirmwareVPD"); }

TEST_F(LifecycleTest, VersionsAreOneZeroAndTypeIsZero) {
  EXPECT_EQ(plugin.GetVersion(), "1.0");
  EXPECT_EQ(plugin.GetInterfaceVersion(), "1.0");
  EXPECT_EQ(plugin.GetType(), 0);
}

TEST_F(LifecycleTest, ConstructorLeavesEverythingEmpty) {
  EXPECT_EQ(plugin.classNames, (std::array<std::string, 10>{}));
  EXPECT_EQ(plugin.classCount, 0U);
  EXPECT_EQ(plugin.reservedValue, 0U);
  EXPECT_FALSE(plugin.dataGathered || plugin.ipmiFruExists || plugin.cKVMExists ||
               plugin.ipmiFruProbed);
  EXPECT_TRUE(plugin.spCommandTable.empty());
}

TEST_F(LifecycleTest, ConstructorWithoutPluginManagerRaisesTheAssertion) {
  host::setPluginManager(nullptr);
  try {
    const SPFirmwareVpd unregistered;
    FAIL() << "no exception";
  } catch (const TVELException& e) {
    EXPECT_EQ(e.GetCode(), kErrorAssertion);
    EXPECT_NE(std::string(e.what()).find("px != 0"), std::string::npos) << e.what();
  }
}

TEST_F(LifecycleTest, InitWritesTheClassNameTable) {
  plugin.Init();
  const std::array<std::string, 10> expected = {
      "KRXSG_DiagnosticVPD",
      "KRXSG_PostBIOSVPD",
      "KRXSG_SystemBIOSElement",
      "KRXSG_HardwareRevisionLevel",
      "KRXSG_Vpd",
      "KRXSG_SPROMFirmwareVPDMain",
      "KRXSG_SPROMFirmwareVPDBootROM",
      "KRXSG_DeviceDriver",
      "KRXSG_SystemBIOS",
      "KRXSG_cKVM",
  };
  EXPECT_EQ(plugin.classNames, expected);
}

TEST_F(LifecycleTest, InitLeavesIndexEightAndNineOutOfTheClassCount) {
  plugin.Init();
  EXPECT_EQ(plugin.classNames[8], "KRXSG_SystemBIOS");
  EXPECT_EQ(plugin.classCount, 8U);
  EXPECT_EQ(plugin.reservedValue, 1U);
}

TEST_F(LifecycleTest, SecondInitResetsFlagsAndTextsAndDoublesTheCommandTable) {
  plugin.Init();
  plugin.dataGathered = plugin.ipmiFruExists = plugin.cKVMExists = plugin.ipmiFruProbed = true;
  plugin.machineType = "5010";
  plugin.cKVMFirmwareVersion = "1.0";
  plugin.Init();
  EXPECT_FALSE(plugin.dataGathered || plugin.ipmiFruExists || plugin.cKVMExists ||
               plugin.ipmiFruProbed);
  EXPECT_EQ(plugin.machineType, "");
  EXPECT_EQ(plugin.cKVMFirmwareVersion, "");
  EXPECT_EQ(plugin.spCommandTable.size(), 62U);
}

TEST_F(LifecycleTest, SecondInitLeavesInstancesAndTablesAlone) {
  plugin.Init();
  plugin.vpdInstances.resize(1);
  plugin.smbiosOemEntries = {{"key", "value"}};
  plugin.parsedVpdRecords.resize(2);
  plugin.Init();
  EXPECT_EQ(plugin.vpdInstances.size(), 1U);
  EXPECT_EQ(plugin.smbiosOemEntries.size(), 1U);
  EXPECT_EQ(plugin.parsedVpdRecords.size(), 2U);
}

TEST_F(LifecycleTest, DeInitDoesNothing) {
  plugin.Init();
  plugin.dataGathered = true;
  plugin.DeInit();
  EXPECT_TRUE(plugin.dataGathered);
  EXPECT_EQ(plugin.classCount, 8U);
}

// Tells when it ends.
class Watched : public SPFirmwareVpd {
 public:
  explicit Watched(bool& ended) : ended_(ended) {}
  ~Watched() override { ended_ = true; }

  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

 private:
  bool& ended_;
};

TEST_F(LifecycleTest, PrepareForUnloadDeletesTheObject) {
  bool ended = false;
  IPluginCallbacks* const watched = new Watched(ended);
  watched->PrepareForUnload();
  EXPECT_TRUE(ended);
}

// The order in which the framework finds the operations in the object.
TEST_F(LifecycleTest, InterfacesFollowEachOtherInTheObject) {
  const auto* object = reinterpret_cast<const char*>(&plugin);
  const auto* primary = reinterpret_cast<const char*>(static_cast<IPluginCallbacks*>(&plugin));
  const auto* secondary =
      reinterpret_cast<const char*>(static_cast<IPluginBasicQueryCallbacks*>(&plugin));
  EXPECT_EQ(primary, object);
  EXPECT_EQ(secondary, object + sizeof(void*));
}

}  // namespace
}  // namespace spfirmwarevpd::test
