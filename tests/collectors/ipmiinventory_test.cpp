// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/ipmiinventory.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "scriptedbmc.h"
#include "vel/exception.h"
#include "velhost/cimnamespace.h"
#include "velhost/log.h"
#include "velhost/pluginloader.h"

namespace ipmiinventory {
namespace {

using namespace NKRXVEL20;

using Texts = std::vector<std::string>;

const Exchange kDeviceId{"06 01", "00 20 81 02 13 02 BF 57 01 00 34 12 01 0A 00 FF"};
const Exchange kGuid{"06 08", "00 66 55 44 33 22 11 34 92 EF 41 CD AB 78 56 34 12"};
const Texts kController = {
    "KRXSG_ManagementController: Name=BMC DeviceID=32 DeviceRevision=1 FirmwareVersion=2.13"
    " AuxiliaryFirmwareRevision=010A00FF IPMIVersion=2.0 ManufacturerID=343 ProductID=4660"
    " GUID=12345678-abcd-41ef-9234-112233445566"};

// One record, for device 1, a power supply; its board area has a date, "BB" and a wrong end.
const std::vector<Exchange> kFruExchanges = {
    {"0A 23 00 00 00 00 00 FF",
     "00 FF FF 01 00 51 11 10 20 01 80 00 00 10 02 0A 02 00 C5 50 53 55 20 31"},
    {"0A 10 00", "CB"},
    {"0A 10 01", "00 18 00 00"},
    {"0A 11 01 00 00 08", "00 08 01 00 00 01 00 00 00 FE"},
    {"0A 11 01 08 00 10", "00 10 01 02 00 01 00 00 C2 42 42 CF 00 00 00 00 00 E7"},
};
const Texts kFrus = {
    "KRXSG_IPMIFRU: FRUDeviceID=1 Name=PSU 1 Description=Power supply EntityID=10 EntityInstance=2"
    " BoardManufacturer=BB BoardManufactureDate=19960101000100.000000+000"
    " Notes=board area: field 2 reaches past its end"};

class IpmiInventoryTest : public ::testing::Test {
 protected:
  ~IpmiInventoryTest() override { host::setCoreLogSink({}); }

  void start(std::vector<Exchange> exchanges) {
    collector =
        std::make_unique<IpmiInventory>(std::make_unique<ScriptedBmc>(std::move(exchanges)));
    collector->Init();
    host::setCoreLogSink([this](const host::LogEntry& entry) {
      logged.push_back(std::to_string(entry.severity) + " " + entry.text);
    });
  }

  // "CLASS: NAME=VALUE NAME=VALUE", a published instance a line.
  Texts request(const Texts& names) {
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const std::string& name : names) classes.push_back(ns->requestClass(name));
    collector->GetData(ns, classes);
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
  std::unique_ptr<IpmiInventory> collector;
  Texts logged;
};

TEST_F(IpmiInventoryTest, SaysWhoItIs) {
  start({});
  EXPECT_EQ("IPMIInventory", collector->GetName());
  EXPECT_EQ("1.0", collector->GetVersion());
}

TEST_F(IpmiInventoryTest, EachClassAsksForWhatItNeedsAndNothingTwice) {
  std::vector<Exchange> exchanges{kDeviceId, kGuid};
  exchanges.insert(exchanges.end(), kFruExchanges.begin(), kFruExchanges.end());
  start(exchanges);
  EXPECT_EQ(kController, request({"KRXSG_ManagementController"}));
  EXPECT_EQ(kFrus, request({"KRXSG_IPMIFRU"}));
  EXPECT_EQ(kController, request({"KRXSG_ManagementController"}));
  EXPECT_EQ(Texts{}, logged);
}

TEST_F(IpmiInventoryTest, InitAsksAnew) {
  start({{"06 01", ""}, kDeviceId, kGuid});
  EXPECT_EQ(Texts{}, request({"KRXSG_ManagementController"}));
  EXPECT_EQ(Texts{}, request({"KRXSG_ManagementController", "KRXSG_IPMIFRU"}));
  EXPECT_EQ(Texts{"3 IPMIInventory: no BMC says what it is."}, logged);
  collector->Init();
  EXPECT_EQ(kController, request({"KRXSG_ManagementController"}));
}

TEST_F(IpmiInventoryTest, WhatIsNotGivenIsNotSet) {
  start({{"06 01", "00 20 01 02 13 51 00 00 00 00 00 00"}, {"06 08", "C1"}});
  EXPECT_EQ(Texts{"KRXSG_ManagementController: Name=BMC DeviceID=32 DeviceRevision=1"
                  " FirmwareVersion=2.13 IPMIVersion=1.5"},
            request({"KRXSG_ManagementController"}));
}

// It was the last answer: the FRU devices are not asked for.
TEST_F(IpmiInventoryTest, AControllerThatFallsSilentIsToldWithoutItsGuid) {
  start({kDeviceId, {"06 08", ""}});
  EXPECT_EQ(Texts{"KRXSG_ManagementController: Name=BMC DeviceID=32 DeviceRevision=1"
                  " FirmwareVersion=2.13 AuxiliaryFirmwareRevision=010A00FF IPMIVersion=2.0"
                  " ManufacturerID=343 ProductID=4660"},
            request({"KRXSG_ManagementController", "KRXSG_IPMIFRU"}));
  EXPECT_EQ(Texts{}, logged);
}

TEST_F(IpmiInventoryTest, AControllerWithoutARepositoryIsAskedForDevice0Alone) {
  start({{"06 01", "00 20 01 02 13 51 08 00 00 00 00 00"}, {"0A 10 00", "CB"}});
  EXPECT_EQ(Texts{}, request({"KRXSG_IPMIFRU"}));
}

TEST_F(IpmiInventoryTest, ARefusedDeviceIdLeavesTheFruDevices) {
  std::vector<Exchange> exchanges{{"06 01", "C1"}};
  exchanges.insert(exchanges.end(), kFruExchanges.begin(), kFruExchanges.end());
  start(exchanges);
  EXPECT_EQ(kFrus, request({"KRXSG_ManagementController", "KRXSG_IPMIFRU"}));
}

TEST_F(IpmiInventoryTest, AWalkThatEndsEarlyIsLogged) {
  start({kDeviceId, {"0A 23 00 00 00 00 00 FF", "C1"}, {"0A 10 00", "CB"}});
  EXPECT_EQ(Texts{}, request({"KRXSG_IPMIFRU"}));
  EXPECT_EQ(Texts{"1 IPMIInventory: there may be more FRU devices: in the BMC's SDR repository a"
                  " record cannot be read"},
            logged);
}

TEST_F(IpmiInventoryTest, OtherClassesAreRefused) {
  start({});
  try {
    request({"KRXSG_Vpd"});
    FAIL() << "no exception";
  } catch (const TVELException& refused) {
    EXPECT_EQ(kErrorClassNotServed, refused.GetCode());
  }
}

}  // namespace
}  // namespace ipmiinventory
