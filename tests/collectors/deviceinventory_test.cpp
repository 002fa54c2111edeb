// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/deviceinventory.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "scriptedtree.h"
#include "vel/exception.h"
#include "velhost/cimnamespace.h"
#include "velhost/pluginloader.h"

namespace deviceinventory {
namespace {

using namespace NKRXVEL20;

using Texts = std::vector<std::string>;

constexpr char kUsbId[] = R"(USB\VID_1D6B&PID_0104\1-1)";
constexpr char kTapeId[] = R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_&REV_\0:0:4:0)";

class DeviceInventoryTest : public ::testing::Test {
 protected:
  DeviceInventoryTest() { collector.Init(); }

  // "CLASS: NAME=VALUE NAME=VALUE", a published instance a line.
  Texts request(const Texts& names) {
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const std::string& name : names) classes.push_back(ns->requestClass(name));
    collector.GetData(ns, classes);
    Texts lines;
    for (const auto& row : ns->takePublished()) {
      std::string& line = lines.emplace_back(row.className + ":");
      for (const auto& [name, value] : row.properties) line += " " + name + "=" + value.ToString();
    }
    return lines;
  }

  host::PluginLoader loader;  // has the plug-in manager with which a collector registers
  boost::shared_ptr<host::CimNamespace> ns = boost::make_shared<host::CimNamespace>(
      std::vector<std::string>{}, std::vector<host::Fault>{});
  std::shared_ptr<ScriptedTree> tree = std::make_shared<ScriptedTree>(std::vector<ScriptedDevice>{
      {"/u/1-1",
       "usb",
       "usb_device",
       {{"idVendor", "1d6b"}, {"idProduct", "0104"}, {"product", "KRX cKVM"}}},
      {"/u/1-2", "usb", "usb_device", {{"idVendor", "1d6b"}, {"idProduct", "0002"}}},
      {"/t/0:0:4:0", "scsi", "scsi_device", {{"type", "1"}, {"vendor", "ACME    "}}},
  });
  collector::Companion collector{kName, kVersion, servedClasses(tree)};

  const Texts usb = {
      std::string("KRXSG_USBDevice: DeviceID=") + kUsbId + " Description=KRX cKVM",
      R"(KRXSG_USBDevice: DeviceID=USB\VID_1D6B&PID_0002\1-2)"};  // gives no description
  const Texts tape = {std::string("KRXSG_TapeDrive: DeviceID=") + kTapeId + " Description=ACME"};
};

TEST_F(DeviceInventoryTest, SaysWhoItIs) {
  EXPECT_EQ(collector.GetType(), 0);
  EXPECT_EQ(collector.GetName(), "DeviceInventory");
  EXPECT_EQ(collector.GetVersion(), "1.0");
  EXPECT_EQ(collector.GetInterfaceVersion(), "1.0");
}

TEST_F(DeviceInventoryTest, EachClassHasItsDevices) {
  EXPECT_EQ(request({"KRXSG_USBDevice"}), usb);
  EXPECT_EQ(request({"KRXSG_TapeDrive"}), tape);
}

TEST_F(DeviceInventoryTest, ReadsOnlyWhatIsAskedFor) {
  request({"KRXSG_TapeDrive"});
  EXPECT_EQ(tree->calls.front(), "devices scsi scsi_device");
  EXPECT_EQ(request({}), Texts{});
}

TEST_F(DeviceInventoryTest, ReadsOnceUntilInitAndPublishesEachTime) {
  EXPECT_EQ(request({"KRXSG_USBDevice"}), usb);
  tree->calls.clear();
  EXPECT_EQ(request({"KRXSG_USBDevice"}), usb);
  EXPECT_EQ(tree->calls, Texts{});
  collector.Init();
  EXPECT_EQ(request({"KRXSG_USBDevice"}), usb);
  EXPECT_EQ(tree->calls.front(), "devices usb usb_device");
}

TEST_F(DeviceInventoryTest, OtherClassesAreRefusedBehindThoseThatAreServed) {
  try {
    request({"KRXSG_USBDevice", "KRXSG_Vpd", "KRXSG_TapeDrive"});
    FAIL() << "no exception";
  } catch (const TVELException& refused) {
    EXPECT_EQ(refused.GetCode(), kErrorClassNotServed);
  }
  EXPECT_EQ(ns->takePublished().size(), 2U);
}

TEST_F(DeviceInventoryTest, RefusalOfTheFrameworkPasses) {
  ns = boost::make_shared<host::CimNamespace>(
      std::vector<std::string>{},
      std::vector<host::Fault>{{.operation = host::CimOperation::kSetProperty,
                                .className = {},
                                .propertyName = "Description",
                                .nth = 1,
                                .throwsRuntimeError = false}});
  EXPECT_THROW(request({"KRXSG_USBDevice"}), TVELException);
  EXPECT_EQ(request({"KRXSG_USBDevice"}), usb);  // the next request collects anew
}

}  // namespace
}  // namespace deviceinventory
