// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "tests/support/namespacespy.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using host::CimOperation;

constexpr char kAcme[] = R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5&1A2B)";
constexpr char kScsi[] = R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5&1A2B)";
constexpr char kNoRevision[] = R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_\5&1A2B)";

using Rows = std::vector<std::pair<std::string, Properties>>;

std::pair<std::string, Properties> tape(const std::string& vendor, const std::string& product,
                                        const std::string& revision) {
  return {"KRXSG_USBTapeFirmwareElement",
          {"Version=" + revision, "TargetOperatingSystem=1", "SoftwareElementState=2",
           "Name= USB TAPE " + product, "Manufacturer=" + vendor,
           "SoftwareElementID=VEL USB Tape Device"}};
}

class UsbTapeTest : public PluginTest {
 protected:
  void addDrive(const char* deviceId) {
    ns->addCompanion("KRXSG_TapeDrive", {{"DeviceID", TCIMValue(deviceId)}});
  }

  Rows collect() {
    plugin.getUsbTapeFirmware(ns);
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(failureLog, Log{});
    return takePublished();
  }

  // The code of the exception that the call ends in; -1 for none.
  int exceptionCode() {
    try {
      plugin.getUsbTapeFirmware(ns);
      return -1;
    } catch (const TVELException& e) {
      return e.GetCode();
    }
  }
};

TEST_F(UsbTapeTest, NoTapeDriveGivesNothing) {
  useFaults({}, {"KRXSG_USBTapeFirmwareElement"});  // not even looked up
  EXPECT_EQ(collect(), Rows{});
}

TEST_F(UsbTapeTest, UsbTapeIsPublishedAtOnce) {
  addDrive(kAcme);
  EXPECT_EQ(collect(), (Rows{tape("ACME", "TAPE1", "0102")}));
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(UsbTapeTest, ScsiOrSasTapeGivesNothing) {
  addDrive(kScsi);
  addDrive(R"(SAS\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5&1A2B)");
  addDrive(R"(usbstor\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5&1A2B)");
  ns->addCompanion("KRXSG_TapeDrive", {{"Description", TCIMValue("USBSTOR")}});  // no DeviceID
  EXPECT_EQ(collect(), Rows{});
}

TEST_F(UsbTapeTest, EmptyRevisionSetsNothingAndIsNotPublished) {
  const Fault anySet = {.operation = CimOperation::kSetProperty,
                        .className = {},
                        .propertyName = {},
                        .nth = std::nullopt,
                        .throwsRuntimeError = true};
  useFaults({anySet});
  addDrive(kNoRevision);
  addDrive(R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1\5&1A2B)");  // no key
  addDrive("USBSTOR\\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_");      // ends behind its key
  EXPECT_EQ(collect(), Rows{});
}

TEST_F(UsbTapeTest, DrivesComeInTheOrderOfTheEnumeration) {
  addDrive(R"(USBSTOR\SEQUENTIAL&VEN_B&PROD_T2&REV_2\x)");
  addDrive(kScsi);
  addDrive(kNoRevision);
  addDrive(kAcme);
  addDrive("USBSTOR\\SEQUENTIAL&REV_3");  // missing keys give empty texts
  EXPECT_EQ(collect(),
            (Rows{tape("B", "T2", "2"), tape("ACME", "TAPE1", "0102"), tape("", "", "3")}));
  // The next call publishes anew.
  EXPECT_EQ(collect().size(), 3U);
}

TEST_F(UsbTapeTest, EveryLookupIsMadeAsAPlugin) {
  addDrive(kScsi);
  addDrive(kNoRevision);
  addDrive(kAcme);
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  plugin.getUsbTapeFirmware(spy);
  EXPECT_EQ(
      spy->takeCalls(),
      (Calls{"get KRXSG_TapeDrive as a plug-in", "enumerate KRXSG_TapeDrive as a plug-in",
             "read KRXSG_TapeDrive.DeviceID as a plug-in",
             "read KRXSG_TapeDrive.DeviceID as a plug-in",
             "get KRXSG_USBTapeFirmwareElement as a plug-in", "create KRXSG_USBTapeFirmwareElement",
             "read KRXSG_TapeDrive.DeviceID as a plug-in",
             "get KRXSG_USBTapeFirmwareElement as a plug-in", "create KRXSG_USBTapeFirmwareElement",
             "set KRXSG_USBTapeFirmwareElement.Version",
             "set KRXSG_USBTapeFirmwareElement.TargetOperatingSystem",
             "set KRXSG_USBTapeFirmwareElement.SoftwareElementState",
             "set KRXSG_USBTapeFirmwareElement.Name",
             "set KRXSG_USBTapeFirmwareElement.Manufacturer",
             "set KRXSG_USBTapeFirmwareElement.SoftwareElementID",
             "add KRXSG_USBTapeFirmwareElement as a plug-in"}));
}

TEST_F(UsbTapeTest, MissingClassPasses) {
  for (const char* missing : {"KRXSG_TapeDrive", "KRXSG_USBTapeFirmwareElement"}) {
    useFaults({}, {missing});
    if (missing != std::string("KRXSG_TapeDrive")) addDrive(kNoRevision);
    EXPECT_EQ(exceptionCode(), kErrorClassNotFound) << missing;
    EXPECT_EQ(log, Log{}) << missing;
  }
}

TEST_F(UsbTapeTest, NullNamespacePassesTheAssertion) {
  ns.reset();
  EXPECT_EQ(exceptionCode(), kErrorAssertion);
}

// A namespace with one tape drive, whose DeviceID is not to be had.
class DriveWithoutIdNamespace : public ICIMNamespace {
 public:
  explicit DriveWithoutIdNamespace(bool isNull) : isNull_(isNull) {}

  boost::shared_ptr<ICIMClass> GetClass(const std::string&, TCIMValueMap) override {
    return boost::make_shared<Class>(isNull_);
  }

 private:
  class Drive : public ICIMInstance {
   public:
    explicit Drive(bool isNull) : isNull_(isNull) {}
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string&, const TCIMValueMap&) override {
      if (!isNull_) throw TVELException(kErrorPropertyNotFound);
      return {};
    }
    void SetProperty(const std::string&, const TCIMValue&, const TCIMValueMap&) override {}
    void AddToClass(TCIMValueMap) override {}

   private:
    bool isNull_;
  };

  class Class : public ICIMClass {
   public:
    explicit Class(bool isNull) : isNull_(isNull) {}
    const std::string& GetName(const TCIMValueMap&) const override {
      static const std::string name = "KRXSG_TapeDrive";
      return name;
    }
    void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback, bool,
                      const TCIMValueMap&) override {
      callback(boost::make_shared<Drive>(isNull_));
    }
    boost::shared_ptr<ICIMInstance> CreateInstance() override { return {}; }

   private:
    bool isNull_;
  };

  bool isNull_;
};

TEST_F(UsbTapeTest, DriveWithoutDeviceIdEndsTheCall) {
  const struct {
    const char* what;
    bool isNull;
    int code;
  } cases[] = {
      {"no such property", false, kErrorPropertyNotFound},
      {"null property", true, kErrorAssertion},
  };
  for (const auto& c : cases) {
    try {
      plugin.getUsbTapeFirmware(boost::make_shared<DriveWithoutIdNamespace>(c.isNull));
      ADD_FAILURE() << c.what << " was passed over";
    } catch (const TVELException& e) {
      EXPECT_EQ(e.GetCode(), c.code) << c.what;
    }
    EXPECT_EQ(log, Log{}) << c.what;
  }
}

TEST_F(UsbTapeTest, EveryFailureOfTheFrameworkPassesAndEndsTheCall) {
  const struct {
    const char* what;
    CimOperation operation;
    const char* property;
  } cases[] = {
      {"class lookup", CimOperation::kGetClass, ""},
      {"enumeration", CimOperation::kEnumerateInstances, ""},
      {"property read", CimOperation::kGetProperty, "DeviceID"},
      {"creation", CimOperation::kCreateInstance, ""},
      {"Version", CimOperation::kSetProperty, "Version"},
      {"TargetOperatingSystem", CimOperation::kSetProperty, "TargetOperatingSystem"},
      {"SoftwareElementState", CimOperation::kSetProperty, "SoftwareElementState"},
      {"Name", CimOperation::kSetProperty, "Name"},
      {"Manufacturer", CimOperation::kSetProperty, "Manufacturer"},
      {"SoftwareElementID", CimOperation::kSetProperty, "SoftwareElementID"},
      {"publication", CimOperation::kAddToClass, ""},
  };
  for (const auto& c : cases) {
    for (const bool runtimeError : {false, true}) {
      useFaults({{.operation = c.operation,
                  .className = {},
                  .propertyName = c.property,
                  .nth = 1,
                  .throwsRuntimeError = runtimeError}});
      addDrive(kAcme);
      addDrive(kAcme);
      if (runtimeError) {
        EXPECT_THROW(plugin.getUsbTapeFirmware(ns), std::runtime_error) << c.what;
      } else {
        EXPECT_EQ(exceptionCode(), kErrorAssertion) << c.what;
      }
      EXPECT_EQ(takePublished(), Rows{}) << c.what;  // the second drive is not looked at
      EXPECT_EQ(log, Log{}) << c.what;
    }
  }
}

TEST_F(UsbTapeTest, DrivesBeforeTheFailureStayPublished) {
  useFaults({{.operation = CimOperation::kAddToClass,
              .className = {},
              .propertyName = {},
              .nth = 2,
              .throwsRuntimeError = false}});
  addDrive(kAcme);
  addDrive(kAcme);
  EXPECT_EQ(exceptionCode(), kErrorAssertion);
  EXPECT_EQ(takePublished(), (Rows{tape("ACME", "TAPE1", "0102")}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
