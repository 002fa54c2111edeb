// SPDX-License-Identifier: Apache-2.0
#include <cstring>

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

// A namespace that is no plug-in manager.
class OtherNamespace : public ICIMNamespace {
 public:
  boost::shared_ptr<ICIMClass> GetClass(const std::string&, TCIMValueMap) override { return {}; }

 private:
  // What a caller that takes it for a manager writes to.
  [[maybe_unused]] std::array<void*, 4> room_{};
};

TEST_F(LifecycleTest, ConstructorWithoutAPluginManagerRaisesTheAssertion) {
  const struct {
    const char* what;
    boost::shared_ptr<ICIMNamespace> manager;
  } cases[] = {{"none", nullptr}, {"one of another type", boost::make_shared<OtherNamespace>()}};
  for (const auto& c : cases) {
    host::setPluginManager(c.manager);
    try {
      const SPFirmwareVpd unregistered;
      ADD_FAILURE() << c.what << ": no exception";
    } catch (const TVELException& e) {
      EXPECT_EQ(e.GetCode(), kErrorAssertion) << c.what;
      EXPECT_NE(std::string(e.what()).find("px != 0"), std::string::npos) << c.what << e.what();
    }
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
  const std::size_t classes[] = {0, 1, 2, 3, 4, 5, 6, 7, 9};  // 8 has no list
  for (const std::size_t k : classes) plugin.instancesOf(k)->resize(k + 1);
  plugin.smbiosOemEntries = {{"key", "value"}};
  plugin.parsedVpdRecords.resize(2);
  plugin.Init();
  for (const std::size_t k : classes) {
    EXPECT_EQ(plugin.instancesOf(k)->size(), k + 1) << plugin.classNames[k];
  }
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

// A pointer to a virtual operation holds the offset of its slot, on some processors plus one
// (Itanium C++ ABI, 2.3).
template <typename Operation>
std::size_t slotOf(Operation operation) {
  std::size_t offset = 0;
  std::memcpy(&offset, &operation, sizeof offset);
  return offset / sizeof(void*);
}

// Plug-ins and hosts are built apart: they meet at these numbers.
TEST_F(LifecycleTest, EachOperationHasItsSlotBehindTheTwoDestructors) {
  EXPECT_EQ(slotOf(&IPluginCallbacks::GetType), 2U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::GetName), 3U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::GetVersion), 4U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::GetInterfaceVersion), 5U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::PrepareForUnload), 6U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::Init), 7U);
  EXPECT_EQ(slotOf(&IPluginCallbacks::DeInit), 8U);
  EXPECT_EQ(slotOf(&IPluginBasicQueryCallbacks::GetData), 2U);
}

TEST_F(LifecycleTest, MembersFollowEachOtherInTheirOrder) {
  const struct {
    const char* name;
    const void* place;
  } members[] = {
      {"classNames", &plugin.classNames},
      {"classCount", &plugin.classCount},
      {"reservedValue", &plugin.reservedValue},
      {"dataGathered", &plugin.dataGathered},
      {"machineType", &plugin.machineType},
      {"cKVMFirmwareVersion", &plugin.cKVMFirmwareVersion},
      {"ipmiFruExists", &plugin.ipmiFruExists},
      {"cKVMExists", &plugin.cKVMExists},
      {"ipmiFruProbed", &plugin.ipmiFruProbed},
      {"diagnosticVpdInstances", &plugin.diagnosticVpdInstances},
      {"postBiosVpdInstances", &plugin.postBiosVpdInstances},
      {"systemBiosElementInstances", &plugin.systemBiosElementInstances},
      {"hardwareRevisionInstances", &plugin.hardwareRevisionInstances},
      {"vpdInstances", &plugin.vpdInstances},
      {"spromMainInstances", &plugin.spromMainInstances},
      {"spromBootRomInstances", &plugin.spromBootRomInstances},
      {"deviceDriverInstances", &plugin.deviceDriverInstances},
      {"cKVMInstances", &plugin.cKVMInstances},
      {"smbiosOemEntries", &plugin.smbiosOemEntries},
      {"parsedVpdRecords", &plugin.parsedVpdRecords},
      {"spCommandTable", &plugin.spCommandTable},
  };
  const void* before = static_cast<IPluginBasicQueryCallbacks*>(&plugin);
  for (const auto& member : members) {
    EXPECT_LT(before, member.place) << member.name;
    before = member.place;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
