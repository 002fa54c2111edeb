// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

constexpr char kNoFru[] = "spfirmwarevpd: There is no KRXSG_IPMIFRU instance.";

class MockClass : public ICIMClass {
 public:
  MOCK_METHOD(const std::string&, GetName, (const TCIMValueMap&), (const, override));
  MOCK_METHOD(void, GetInstances,
              (const boost::function<bool(boost::shared_ptr<ICIMInstance>)>&, bool,
               const TCIMValueMap&),
              (override));
  MOCK_METHOD(boost::shared_ptr<ICIMInstance>, CreateInstance, (), (override));
};

class MockInstance : public ICIMInstance {
 public:
  MOCK_METHOD(boost::shared_ptr<ICIMProperty>, GetProperty,
              (const std::string&, const TCIMValueMap&), (override));
  MOCK_METHOD(void, SetProperty, (const std::string&, const TCIMValue&, const TCIMValueMap&),
              (override));
  MOCK_METHOD(void, AddToClass, (TCIMValueMap), (override));
};

using ::testing::IsEmpty;
using ::testing::ReturnRef;
using ::testing::StrictMock;

class GetDataTest : public PluginTest {
 protected:
  GetDataTest() { plugin.Init(); }

  void request(const std::vector<std::string>& names) {
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const std::string& name : names) classes.push_back(ns->requestClass(name));
    plugin.GetData(ns, classes);
  }

  // The code of the exception that a request ends in; -1 for one that is answered.
  int requestCode(const std::vector<std::string>& names) {
    try {
      request(names);
      return -1;
    } catch (const TVELException& e) {
      return e.GetCode();
    }
  }

  SPFirmwareVpd::InstanceHandle instance(const std::string& className, const char* property,
                                         const char* value) {
    auto result = ns->GetClass(className, {})->CreateInstance();
    result->SetProperty(property, TCIMValue(value), {});
    return result;
  }

  static std::size_t count(const Log& entries, const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count(entries, text, &Log::value_type::second));
  }
};

using Rows = std::vector<std::pair<std::string, Properties>>;

TEST_F(GetDataTest, EmptyRequestProbesAndCollectsAndPublishesNothing) {
  request({});
  EXPECT_TRUE(plugin.ipmiFruProbed);
  EXPECT_TRUE(plugin.dataGathered);
  EXPECT_EQ(takePublished(), Rows{});
  // The probe comes first, then the OEM strings, the machine type and the driver.
  const Log expected = {
      {3, kNoFru},
      {3, "Entering SPFirmwareVpd::getType11()"},
      {0, "getDiagsFirmware: Unable to open SMBIOS lib error = 1"},
      {3, "getMachineType() entered."},
      {3, "getMachineType() completed."},
      {3, "Entering SPFirmwareVpd::getBIOSstructure()"},
      {3, "getMachineType() entered."},
      {3, "getMachineType() completed."},
      {0, "getBIOSstructure: Unable to open SMBIOS lib error = 1"},
      {0, "Failed to collect BIOS data from smbios"},
      {3, "No SP's installed on the system"},
  };
  EXPECT_EQ(log, expected);
}

TEST_F(GetDataTest, SystemBiosAndUsbTapeAreAcceptedAndLeftEmpty) {
  EXPECT_EQ(requestCode({"KRXSG_SystemBIOS", "KRXSG_USBTapeFirmwareElement"}), -1);
  EXPECT_EQ(takePublished(), Rows{});
}

TEST_F(GetDataTest, UnknownClassIsRefusedWithCodeTwoBehindTheServedOnes) {
  request({});
  plugin.vpdInstances.push_back(instance("KRXSG_Vpd", "Name", "DIMM 1"));
  EXPECT_EQ(requestCode({"KRXSG_Vpd", "KRXSG_USBDevice", "KRXSG_Vpd"}), 2);
  EXPECT_EQ(takePublished(), (Rows{{"KRXSG_Vpd", {"Name=DIMM 1"}}}));
}

TEST_F(GetDataTest, NullClassRaisesTheAssertion) {
  std::vector<boost::shared_ptr<ICIMClass>> classes(1);
  try {
    plugin.GetData(ns, classes);
    FAIL() << "no exception";
  } catch (const TVELException& e) {
    EXPECT_EQ(e.GetCode(), kErrorAssertion);
  }
}

TEST_F(GetDataTest, NullInstanceRaisesTheAssertion) {
  plugin.vpdInstances.emplace_back();
  EXPECT_EQ(requestCode({"KRXSG_Vpd"}), kErrorAssertion);
}

TEST_F(GetDataTest, EachServedClassPublishesItsOwnList) {
  request({});
  const struct {
    const char* className;
    SPFirmwareVpd::InstanceList& list;
  } cases[] = {
      {"KRXSG_DiagnosticVPD", plugin.diagnosticVpdInstances},
      {"KRXSG_PostBIOSVPD", plugin.postBiosVpdInstances},
      {"KRXSG_SystemBIOSElement", plugin.systemBiosElementInstances},
      {"KRXSG_HardwareRevisionLevel", plugin.hardwareRevisionInstances},
      {"KRXSG_Vpd", plugin.vpdInstances},
      {"KRXSG_SPROMFirmwareVPDMain", plugin.spromMainInstances},
      {"KRXSG_SPROMFirmwareVPDBootROM", plugin.spromBootRomInstances},
      {"KRXSG_DeviceDriver", plugin.deviceDriverInstances},
      {"KRXSG_cKVM", plugin.cKVMInstances},
  };
  for (const auto& c : cases) {
    // Each instance names its class in a property that the class has.
    const char* property = c.className == std::string("KRXSG_Vpd") ? "Vendor" : "Version";
    c.list.push_back(instance(c.className, property, c.className));
    request({c.className});
    EXPECT_EQ(takePublished(), (Rows{{c.className, {std::string(property) + "=" + c.className}}}))
        << c.className;
  }
}

TEST_F(GetDataTest, AnIpmiFruSourceKeepsVpdBackAndNothingElse) {
  request({});
  plugin.ipmiFruExists = true;
  plugin.vpdInstances.push_back(instance("KRXSG_Vpd", "Name", "DIMM 1"));
  plugin.cKVMInstances.push_back(instance("KRXSG_cKVM", "Version", "1.0"));
  request({"KRXSG_Vpd", "KRXSG_cKVM"});
  EXPECT_EQ(takePublished(), (Rows{{"KRXSG_cKVM", {"Version=1.0"}}}));
}

TEST_F(GetDataTest, SecondRequestPublishesAgainWithoutCollecting) {
  useSmbios({oemStrings({"KRX Diagnostics 1.02"})});
  request({"KRXSG_DiagnosticVPD"});
  const Rows first = takePublished();
  ASSERT_EQ(first.size(), 1U);
  takeLog();
  request({"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(takePublished(), first);
  EXPECT_EQ(log, Log{});
}

TEST_F(GetDataTest, InitMakesTheNextRequestCollectAgain) {
  useSmbios({oemStrings({"KRX Diagnostics 1.02"})});
  request({"KRXSG_DiagnosticVPD"});
  plugin.Init();
  takePublished();
  request({"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(takePublished().size(), 2U);  // the list is never emptied
}

TEST_F(GetDataTest, ExceptionOutOfTheCollectionMakesTheNextRequestCollectAgain) {
  SimulatedSP sp = dotCommandSP();
  useSP(sp);
  useFaults({}, {"KRXSG_QLA_ComputerSystem"});  // read without a catch
  EXPECT_EQ(requestCode({}), kErrorClassNotFound);
  EXPECT_TRUE(plugin.ipmiFruProbed);
  EXPECT_FALSE(plugin.dataGathered);
  useFaults({});
  takeLog();
  EXPECT_EQ(requestCode({}), -1);
  EXPECT_EQ(count(log, "Entering SPFirmwareVpd::getType11()"), 1U);
  EXPECT_EQ(count(log, kNoFru), 0U);  // the probe is not repeated
}

class UninitializedTest : public PluginTest {
 protected:
  int requestCode(const std::string& name) {
    const auto cimClass = boost::make_shared<StrictMock<MockClass>>();
    EXPECT_CALL(*cimClass, GetName(IsEmpty())).WillOnce(ReturnRef(name));
    std::vector<boost::shared_ptr<ICIMClass>> classes = {cimClass};
    try {
      plugin.GetData(ns, classes);
      return -1;
    } catch (const TVELException& e) {
      return e.GetCode();
    }
  }
};

TEST_F(UninitializedTest, AnyNamedClassButTheTapesIsRefused) {
  EXPECT_EQ(requestCode("KRXSG_Vpd"), 2);
  EXPECT_EQ(requestCode("KRXSG_SystemBIOS"), 2);
  EXPECT_EQ(requestCode("KRXSG_USBTapeFirmwareElement"), -1);
}

TEST_F(UninitializedTest, CollectsAllTheSame) {
  EXPECT_EQ(requestCode("KRXSG_Vpd"), 2);
  EXPECT_TRUE(plugin.ipmiFruProbed);
  EXPECT_TRUE(plugin.dataGathered);
}

// All class names are empty then: the first one matches.
TEST_F(UninitializedTest, EmptyNameIsTheFirstClass) {
  const auto first = boost::make_shared<StrictMock<MockInstance>>();
  EXPECT_CALL(*first, AddToClass(IsEmpty()));
  plugin.diagnosticVpdInstances = {first};
  plugin.postBiosVpdInstances = {boost::make_shared<StrictMock<MockInstance>>()};
  EXPECT_EQ(requestCode(""), -1);
}

TEST_F(GetDataTest, ClassAndInstanceAreCalledWithEmptyMaps) {
  const std::string name = "KRXSG_Vpd";
  const auto cimClass = boost::make_shared<StrictMock<MockClass>>();
  const auto published = boost::make_shared<StrictMock<MockInstance>>();
  EXPECT_CALL(*cimClass, GetName(IsEmpty())).WillOnce(ReturnRef(name));
  EXPECT_CALL(*published, AddToClass(IsEmpty()));
  plugin.vpdInstances = {published};
  std::vector<boost::shared_ptr<ICIMClass>> classes = {cimClass};
  plugin.GetData(ns, classes);
}

TEST_F(GetDataTest, SystemBiosHasNoList) { EXPECT_EQ(plugin.instancesOf(8), nullptr); }

TEST_F(GetDataTest, RetrieveInstancesIgnoresNamesWithoutAList) {
  plugin.retrieveInstances("KRXSG_SystemBIOS");
  plugin.retrieveInstances("krxsg_vpd");
  EXPECT_EQ(takePublished(), Rows{});
}

class cKVMCollectionTest : public GetDataTest {
 protected:
  cKVMCollectionTest() { host::setMachineType("3105"); }

  void addUsbDevice(const char* description) {
    ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue(description)}});
  }
};

const Properties kFallbackLevel = {"SoftwareElementID=cKVM", "SoftwareElementState=3",
                                   "TargetOperatingSystem=66", "Version=1.3.11.37",
                                   "FirmwareVersion=1.3.11.37"};

TEST_F(cKVMCollectionTest, FailedIpmiQueryPublishesTheFallbackLevel) {
  addUsbDevice("KRX cKVM");
  request({"KRXSG_cKVM"});
  EXPECT_EQ(takePublished(), (Rows{{"KRXSG_cKVM", kFallbackLevel}}));
}

TEST_F(cKVMCollectionTest, MachineWithoutTheDeviceAsksNothing) {
  addUsbDevice("KRX Keyboard");
  request({"KRXSG_cKVM"});
  EXPECT_EQ(takePublished(), Rows{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(cKVMCollectionTest, OtherMachineTypesAreNotProbed) {
  host::setMachineType("3106");  // shares three digits with a listed one
  addUsbDevice("KRX cKVM");
  request({"KRXSG_cKVM"});
  EXPECT_EQ(takePublished(), Rows{});
  EXPECT_EQ(count(log, "spfirmwarevpd: There is cKVM."), 0U);
}

TEST_F(cKVMCollectionTest, SecondInitAppendsASecondInstance) {
  addUsbDevice("KRX cKVM");
  request({});
  plugin.Init();
  request({"KRXSG_cKVM"});
  EXPECT_EQ(takePublished(),
            (Rows{{"KRXSG_cKVM", kFallbackLevel}, {"KRXSG_cKVM", kFallbackLevel}}));
}

TEST_F(cKVMCollectionTest, LevelOfSkippedBytesOnlyGivesTwoInstances) {
  SimulatedSP sp;
  // A blank is printable, and no character of a level.
  sp.ipmiCommands.push_back({{0x01, 0x20, 0x06},
                             {{.fails = false,
                               .bytes = {0x01, 0x20, 0x06, 0, 0, 0, 0, 0, 0, ' '},
                               .length = std::nullopt}}});
  useSP(sp);
  addUsbDevice("KRX cKVM");
  request({"KRXSG_cKVM"});
  const Properties emptyLevel = {"SoftwareElementID=cKVM", "SoftwareElementState=3",
                                 "TargetOperatingSystem=66", "Version=", "FirmwareVersion="};
  EXPECT_EQ(takePublished(), (Rows{{"KRXSG_cKVM", emptyLevel}, {"KRXSG_cKVM", kFallbackLevel}}));
}

TEST_F(cKVMCollectionTest, ForeignExceptionOfTheProbeLeavesTheCollectionDone) {
  useSmbios({oemStrings({"KRX Diagnostics 1.02"})});
  useFaults({{.operation = host::CimOperation::kGetClass,
              .className = "KRXSG_USBDevice",
              .propertyName = {},
              .nth = std::nullopt,
              .throwsRuntimeError = true}});
  EXPECT_THROW(request({}), std::runtime_error);
  EXPECT_TRUE(plugin.dataGathered);
  takeLog();
  request({"KRXSG_DiagnosticVPD"});
  EXPECT_EQ(takePublished().size(), 1U);
  EXPECT_EQ(log, Log{});
}

TEST_F(cKVMCollectionTest, FailedInstanceOfAReadLevelGetsNoSecondAttempt) {
  SimulatedSP sp;
  sp.ipmiCommands.push_back({{0x01, 0x20, 0x06},
                             {{.fails = false,
                               .bytes = {0x01, 0x20, 0x06, 0, 0, 0, 0, 0, 0, '1', '.', '0'},
                               .length = std::nullopt}}});
  useSP(sp);
  useFaults({}, {"KRXSG_cKVM"});
  addUsbDevice("KRX cKVM");
  request({});
  EXPECT_EQ(plugin.cKVMFirmwareVersion, "1.0");
  EXPECT_EQ(count(log, "cKVM - Cannot create KRXSG_cKVM instance."), 1U);
}

}  // namespace
}  // namespace spfirmwarevpd::test
