// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/smbiosinventory.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "structurebytes.h"
#include "vel/exception.h"
#include "vel/smbios.h"
#include "velhost/cimnamespace.h"
#include "velhost/log.h"
#include "velhost/pluginloader.h"
#include "velhost/smbios.h"

namespace smbiosinventory {
namespace {

using namespace NKRXVEL20;

using Lines = std::vector<std::string>;

constexpr char kFirmware[] = "KRXSG_SystemFirmware";
constexpr char kSystem[] = "KRXSG_ComputerSystem";
constexpr char kMemory[] = "KRXSG_PhysicalMemory";

host::SmbiosStructure structure(unsigned char type, const OwnedBytes& fields,
                                const Lines& strings = {}, int status = kSmBiosRead) {
  return {structureBytes(type, fields, strings), status};
}

class SMBIOSInventoryTest : public ::testing::Test {
 protected:
  SMBIOSInventoryTest() {
    host::setFailureLogSink([this](const host::LogEntry& entry) {
      log.push_back(std::to_string(entry.severity) + " " + entry.text);
    });
    collector.Init();
  }
  ~SMBIOSInventoryTest() override {
    host::setSmbiosTable(std::nullopt);
    host::setFailureLogSink({});
  }
  SMBIOSInventoryTest(const SMBIOSInventoryTest&) = delete;
  SMBIOSInventoryTest& operator=(const SMBIOSInventoryTest&) = delete;

  void give(std::vector<host::SmbiosStructure> structures, int endStatus = kSmBiosNoMore) {
    host::SmbiosTable table;
    table.structures = std::move(structures);
    table.endStatus = endStatus;
    host::setSmbiosTable(std::move(table));
    collector.Init();
  }

  // "NAME=VALUE NAME=VALUE", a published instance a line.
  Lines request(const std::string& name) {
    std::vector<boost::shared_ptr<ICIMClass>> classes = {ns->requestClass(name)};
    collector.GetData(ns, classes);
    Lines lines;
    for (const auto& row : ns->takePublished()) {
      std::string& line = lines.emplace_back();
      for (const auto& [property, value] : row.properties) {
        line += (line.empty() ? "" : " ") + property + "=" + value.ToString();
      }
    }
    return lines;
  }

  Lines log;
  host::PluginLoader loader;  // has the plug-in manager with which a collector registers
  boost::shared_ptr<host::CimNamespace> ns = boost::make_shared<host::CimNamespace>(
      std::vector<std::string>{}, std::vector<host::Fault>{});
  collector::Companion collector{kName, kVersion, servedClasses()};
};

// SMBIOS 2.0: vendor, version, date, 64 KB.
const OwnedBytes kBios = {1, 2, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0};

TEST_F(SMBIOSInventoryTest, EachFirmwareStructureIsAnInstance) {
  give({structure(0, kBios, {"KRX", "1.08 [ABC123]", "03/15/07"}), structure(11, {1}, {"OEM"}),
        structure(0, kBios, {"KRX"})});
  EXPECT_EQ((Lines{"InstanceID=KRXSG:SystemFirmware:1 Vendor=KRX Version=1.08 [ABC123] "
                   "ReleaseDate=20070315000000.000000+000 ROMSize=65536",
                   "InstanceID=KRXSG:SystemFirmware:2 Vendor=KRX ROMSize=65536"}),
            request(kFirmware));
  EXPECT_EQ(Lines{}, log);
}

TEST_F(SMBIOSInventoryTest, ASystemIsMadeOfWhatIsThere) {
  const auto system = structure(1, {1, 0, 0, 0}, {"System maker"});
  const auto board = structure(2, {1, 0, 0, 0}, {"Board maker"});
  const auto chassis = structure(3, {0, 0x17});
  const struct {
    const char* what;
    std::vector<host::SmbiosStructure> structures;
    Lines lines;
  } kCases[] = {
      {"nothing", {}, {}},
      {"a system", {system}, {"Name=System Manufacturer=System maker"}},
      {"a board", {board}, {"Name=System BoardManufacturer=Board maker"}},
      {"a system that tells nothing", {structure(1, {})}, {"Name=System"}},
      {"all three, in any order",
       {chassis, board, system},
       {"Name=System Manufacturer=System maker ChassisType=Rack Mount Chassis "
        "BoardManufacturer=Board maker"}},
      {"two of each: the first",
       {structure(1, {}), system, structure(3, {0, 0x1C}), chassis},
       {"Name=System ChassisType=Blade"}},
  };
  for (const auto& c : kCases) {
    give(c.structures);
    EXPECT_EQ(c.lines, request(kSystem)) << c.what;
  }
}

TEST_F(SMBIOSInventoryTest, TheBoardIsTheFirstMotherboardOrElseTheFirst) {
  const auto board = [](const char* product, unsigned char type) {
    return structure(2, {0, 1, 0, 0, 0, 0, 0, 0, 0, type}, {product});
  };
  const struct {
    const char* what;
    std::vector<host::SmbiosStructure> structures;
    const char* product;
  } kCases[] = {
      {"risers alone", {board("riser", 3), board("other", 3)}, "riser"},
      {"a riser first", {board("riser", 3), board("main", 0x0A)}, "main"},
      {"the motherboard first", {board("main", 0x0A), board("riser", 3)}, "main"},
      {"two of them", {board("riser", 3), board("main", 0x0A), board("second", 0x0A)}, "main"},
  };
  for (const auto& c : kCases) {
    give(c.structures);
    EXPECT_EQ(Lines{std::string("Name=System BoardProduct=") + c.product}, request(kSystem))
        << c.what;
  }
}

TEST_F(SMBIOSInventoryTest, EachSlotIsAnInstanceAlsoBesideOneLikeIt) {
  const OwnedBytes slot = {0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 9, 0, 1, 2, 0x18, 0, 0};
  give({structure(17, slot, {"DIMM", "Bank"}), structure(17, {0, 0}, {"too short"}),
        structure(17, slot, {"DIMM", "Bank"})});
  const std::string line =
      "DeviceLocator=DIMM BankLocator=Bank Populated=true Capacity=1073741824 FormFactor=DIMM "
      "MemoryType=DDR3";
  EXPECT_EQ((Lines{line, line}), request(kMemory));
}

// What a longer structure left behind belongs to none that follows.
TEST_F(SMBIOSInventoryTest, NothingOfAStructureIsLeftInTheNextOne) {
  host::SmbiosStructure open = structure(0, {1}, {});
  open.bytes.resize(5);  // no string set at all
  give({structure(0, {1}, {"a maker of a long name"}), open});
  EXPECT_EQ((Lines{"InstanceID=KRXSG:SystemFirmware:1 Vendor=a maker of a long name",
                   "InstanceID=KRXSG:SystemFirmware:2"}),
            request(kFirmware));
}

TEST_F(SMBIOSInventoryTest, ALibraryThatCannotBeOpenedIsLogged) {
  host::setSmbiosTable(std::nullopt);
  EXPECT_EQ(Lines{}, request(kSystem));
  EXPECT_EQ(Lines{"0 SMBIOSInventory: the SMBIOS library cannot be opened, error 1"}, log);
}

TEST_F(SMBIOSInventoryTest, AReadThatFailsEndsTheWalkAndIsLogged) {
  give({structure(0, {1}, {"first"}), structure(0, {1}, {"second"}, kSmBiosReadFailed),
        structure(0, {1}, {"third"})});
  EXPECT_EQ(Lines{"InstanceID=KRXSG:SystemFirmware:1 Vendor=first"}, request(kFirmware));
  EXPECT_EQ(Lines{"0 SMBIOSInventory: reading SMBIOS structures of type 0 failed, status 3"}, log);
}

TEST_F(SMBIOSInventoryTest, AnEndOfAnotherStatusIsLogged) {
  give({structure(0, {1}, {"first"})}, 7);
  EXPECT_EQ(Lines{"InstanceID=KRXSG:SystemFirmware:1 Vendor=first"}, request(kFirmware));
  EXPECT_EQ(Lines{"0 SMBIOSInventory: reading SMBIOS structures of type 0 failed, status 7"}, log);
}

TEST_F(SMBIOSInventoryTest, SaysWhoItIsAndServesNothingElse) {
  EXPECT_EQ("SMBIOSInventory", collector.GetName());
  EXPECT_EQ("1.0", collector.GetVersion());
  EXPECT_THROW(request("KRXSG_Vpd"), TVELException);
}

}  // namespace
}  // namespace smbiosinventory
