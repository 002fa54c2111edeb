// SPDX-License-Identifier: Apache-2.0
#include "vpd/vpdrecords.h"

#include <functional>
#include <stdexcept>

#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using host::CimOperation;

constexpr std::size_t kReplySize = 2048;

const Bytes kCommonRecord = joined({
    text("not read here.", 14),
    text("39M1234 REV5", 12),  // byte 14: part number
    text("39Y5678 FRU9", 12),  // byte 26: FRU number
    text("KQ1A2B", 6),         // byte 38: serial number and device prefix
    text("unread", 6),         // byte 44
    text("ACME", 4),           // byte 50: vendor
    text("3", 1),              // byte 54: slot
    text("behind", 6),
});

const Bytes kDimmRecord = joined({
    Bytes(64, 'x'),                     // the SPD bytes that are not read
    {0x7F, 0x7F, 0x9E, 0, 0, 0, 0, 0},  // byte 64: bank 3, code 0x1E
    text("L", 1),                       // byte 72: location
    text("CM3X2048A-1600C9 R", 18),     // byte 73: part number
    text("B2", 2),                      // byte 91: revision
    text("dt", 2),                      // byte 93: date, not read
    {0x0A, 0xB0, 0x00, 0xFF},           // byte 95: serial number
    text("behind", 6),
});

const Bytes kPlanarRecord = joined({
    text("SN12AB", 6),         // byte 0: serial number
    text("46K6789 PN01", 12),  // byte 6: part number
    text("behind", 6),
});

class VpdRecordsTest : public PluginTest {
 protected:
  enum class Decoder { kCommon, kDimm, kPlanar };

  int decode(Decoder decoder, Bytes record, const std::string& label = {},
             std::string component = {}, int dimmNumber = 3) {
    record.resize(kReplySize);
    switch (decoder) {
      case Decoder::kCommon:
        return plugin.printVpdData(component.data(), label.c_str(), record.data(), ns).status;
      case Decoder::kDimm:
        return plugin
            .printMemoryVpdData(component.data(), label.c_str(), record.data(), dimmNumber, ns)
            .status;
      case Decoder::kPlanar:
        return plugin.printPlanarVpd(component.data(), label.c_str(), record.data(), ns).status;
    }
    return -1;
  }

  // The one instance that the call adds.
  Properties common(const Bytes& record, const std::string& label = {},
                    const std::string& component = "Power Supply 1") {
    return added([&] { return decode(Decoder::kCommon, record, label, component); });
  }
  Properties dimm(const Bytes& record, const std::string& label = {}, int number = 3,
                  const std::string& component = "DIMM") {
    return added([&] { return decode(Decoder::kDimm, record, label, component, number); });
  }
  Properties planar(const Bytes& record, const std::string& label = {},
                    const std::string& component = "Planar") {
    return added([&] { return decode(Decoder::kPlanar, record, label, component); });
  }

 private:
  Properties added(const std::function<int()>& call) {
    plugin.vpdInstances.clear();
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(takeLog(), Log{});
    const auto instances = published(plugin.vpdInstances);
    EXPECT_EQ(instances.size(), 1U);
    return instances.empty() ? Properties{} : instances.front();
  }
};

TEST_F(VpdRecordsTest, CommonRecord) {
  EXPECT_EQ(common(kCommonRecord),
            (Properties{"Name=Power Supply 1", "IdentifyingNumber= ", "Location=",
                        "PartNumber=39M1234 REV5", "SerialNumber=KQ1A2B", "FRUNumber=39Y5678 FRU9",
                        "DevicePrefix=KQ1A2B", "Vendor=ACME", "SlotNumber=3"}));
}

TEST_F(VpdRecordsTest, CommonRecordOfANode) {
  EXPECT_EQ(common(kCommonRecord, "Node 2"),
            (Properties{"Name=Node 2: Power Supply 1", "IdentifyingNumber= ", "Location=Node 2",
                        "PartNumber=39M1234 REV5", "SerialNumber=KQ1A2B", "FRUNumber=39Y5678 FRU9",
                        "DevicePrefix=KQ1A2B", "Vendor=ACME", "SlotNumber=3"}));
}

TEST_F(VpdRecordsTest, DimmRecord) {
  EXPECT_EQ(dimm(kDimmRecord),
            (Properties{"Name=DIMM 3", "IdentifyingNumber=3", "FRUNumber= ", "Vendor=Corsair",
                        "Location=L", "PartNumber=CM3X2048A-1600C9 R", "RevisionLevel=B2",
                        "SerialNumber=0AB000FF"}));
}

TEST_F(VpdRecordsTest, DimmRecordOfANode) {
  EXPECT_EQ(dimm(kDimmRecord, "Node 2"),
            (Properties{"Name=Node 2: DIMM 3", "IdentifyingNumber=3", "FRUNumber= ",
                        "Vendor=Corsair", "Location=Node 2: L", "PartNumber=CM3X2048A-1600C9 R",
                        "RevisionLevel=B2", "SerialNumber=0AB000FF"}));
}

TEST_F(VpdRecordsTest, PlanarRecord) {
  EXPECT_EQ(planar(kPlanarRecord),
            (Properties{"IdentifyingNumber= ", "Name=Planar", "Vendor= ", "FRUNumber= ",
                        "Location=", "PartNumber=46K6789 PN01", "SerialNumber=SN12AB"}));
}

TEST_F(VpdRecordsTest, PlanarRecordOfANode) {
  EXPECT_EQ(planar(kPlanarRecord, "Node 2"),
            (Properties{"IdentifyingNumber= ", "Name=Node 2: Planar", "Vendor= ", "FRUNumber= ",
                        "Location=Node 2", "PartNumber=46K6789 PN01", "SerialNumber=SN12AB"}));
}

TEST_F(VpdRecordsTest, RecordOfZeroBytesStillGivesAnInstance) {
  EXPECT_EQ(
      common({}),
      (Properties{"Name=Power Supply 1", "IdentifyingNumber= ", "Location=", "PartNumber=",
                  "SerialNumber=", "FRUNumber= ", "DevicePrefix=", "Vendor= ", "SlotNumber="}));
  EXPECT_EQ(dimm({}), (Properties{"Name=DIMM 3", "IdentifyingNumber=3", "FRUNumber= ", "Vendor= ",
                                  "Location=", "PartNumber=", "RevisionLevel=", "SerialNumber="}));
  EXPECT_EQ(planar({}), (Properties{"IdentifyingNumber= ", "Name=Planar", "Vendor= ", "FRUNumber= ",
                                    "Location=", "PartNumber=", "SerialNumber="}));
}

TEST_F(VpdRecordsTest, RecordOfOnesIsTakenAsItComes) {
  const Bytes record(kReplySize, 0xFF);
  const auto ones = [](std::size_t count) { return std::string(count, '\xFF'); };
  EXPECT_EQ(common(record), (Properties{"Name=Power Supply 1", "IdentifyingNumber= ", "Location=",
                                        "PartNumber=" + ones(12), "SerialNumber=" + ones(6),
                                        "FRUNumber=" + ones(12), "DevicePrefix=" + ones(6),
                                        "Vendor=" + ones(4), "SlotNumber=" + ones(1)}));
  EXPECT_EQ(dimm(record), (Properties{"Name=DIMM 3", "IdentifyingNumber=3", "FRUNumber= ",
                                      "Vendor= ", "Location=" + ones(1), "PartNumber=" + ones(18),
                                      "RevisionLevel=" + ones(2), "SerialNumber=FFFFFFFF"}));
  EXPECT_EQ(planar(record),
            (Properties{"IdentifyingNumber= ", "Name=Planar", "Vendor= ", "FRUNumber= ",
                        "Location=", "PartNumber=" + ones(12), "SerialNumber=" + ones(6)}));
}

TEST_F(VpdRecordsTest, FieldEndsAtItsFirstZeroByteAndKeepsItsBlanks) {
  EXPECT_EQ(common(joined({zeros(14),
                           text(" 39M  ", 12),
                           {0, 'F'},
                           zeros(10),
                           {'S', 0, 'X', 'Y', 'Z', '!'},
                           zeros(6),
                           text("    ", 4),
                           text(" ", 1)})),
            (Properties{"Name=Power Supply 1",
                        "IdentifyingNumber= ", "Location=", "PartNumber= 39M  ", "SerialNumber=S",
                        "FRUNumber= ", "DevicePrefix=S", "Vendor=    ", "SlotNumber= "}));
  EXPECT_EQ(planar(joined({{0, 'S'}, zeros(4), text("P N ", 12)})),
            (Properties{"IdentifyingNumber= ", "Name=Planar", "Vendor= ", "FRUNumber= ",
                        "Location=", "PartNumber=P N ", "SerialNumber="}));
}

TEST_F(VpdRecordsTest, ShortRecordIsCutWhereItEnds) {
  EXPECT_EQ(common(Bytes(kCommonRecord.begin(), kCommonRecord.begin() + 40)),
            (Properties{"Name=Power Supply 1", "IdentifyingNumber= ", "Location=",
                        "PartNumber=39M1234 REV5", "SerialNumber=KQ", "FRUNumber=39Y5678 FRU9",
                        "DevicePrefix=KQ", "Vendor= ", "SlotNumber="}));
  EXPECT_EQ(dimm(Bytes(kDimmRecord.begin(), kDimmRecord.begin() + 96)),
            (Properties{"Name=DIMM 3", "IdentifyingNumber=3", "FRUNumber= ", "Vendor=Corsair",
                        "Location=L", "PartNumber=CM3X2048A-1600C9 R", "RevisionLevel=B2",
                        "SerialNumber=0A000000"}));
}

TEST_F(VpdRecordsTest, ZeroSlotByteGivesAnEmptySlotNumber) {
  Bytes record = kCommonRecord;
  record[54] = 0;
  EXPECT_EQ(common(record).back(), "SlotNumber=");
}

TEST_F(VpdRecordsTest, DevicePrefixAlwaysEqualsSerialNumber) {
  for (const char* serial : {"KQ1A2B", "S", ""}) {
    const Properties instance = common(joined({zeros(38), text(serial, 6), text("PREFIX", 6)}));
    ASSERT_EQ(instance.size(), 9U);
    EXPECT_EQ(instance[4], std::string("SerialNumber=") + serial);
    EXPECT_EQ(instance[6], std::string("DevicePrefix=") + serial);
  }
}

TEST_F(VpdRecordsTest, EmptyNameBecomesASpace) {
  EXPECT_EQ(common({}, "", "").front(), "Name= ");
  EXPECT_EQ(planar({}, "", "")[1], "Name= ");
  // With a label the name is not empty.
  EXPECT_EQ(common({}, "Node 2", "").front(), "Name=Node 2: ");
  EXPECT_EQ(planar({}, "Node 2", "")[1], "Name=Node 2: ");
}

TEST_F(VpdRecordsTest, DimmNumberIsPartOfTheName) {
  for (const int number : {0, 1, 255}) {
    const std::string digits = std::to_string(number);
    const Properties instance = dimm({}, "Node 8", number);
    EXPECT_EQ(instance[0], "Name=Node 8: DIMM " + digits);
    EXPECT_EQ(instance[1], "IdentifyingNumber=" + digits);
  }
  EXPECT_EQ(dimm({}, "", 7, "").front(), "Name= 7");
}

TEST_F(VpdRecordsTest, DimmMakers) {
  const struct {
    const char* what;
    Bytes identity;  // from byte 64
    const char* vendor;
    const char* location;
  } cases[] = {
      {"7F 7F 9E", {0x7F, 0x7F, 0x9E, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'L'}, "Corsair", "L"},
      {"bank 1", {0x2C, 0, 0, 0, 0, 0, 0, 0, 'L'}, "Micron Technology", "L"},
      {"code 00", {0x00}, " ", ""},
      {"code 80", {0x80}, " ", ""},
      {"code FF", {0xFF}, " ", ""},
      {"null last entry", {0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0xFE}, " ", ""},
      {"seven continuations", {0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x01, 'L'}, " ", "L"},
      {"eight 7F, then a code as the location",
       {0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 'L'},
       " ",
       "L"},
      {"7F runs on into the location", Bytes(9, 0x7F), " ", "\x7F"},
  };
  for (const auto& c : cases) {
    const Properties instance = dimm(joined({zeros(64), c.identity}));
    ASSERT_EQ(instance.size(), 8U);
    EXPECT_EQ(instance[3], std::string("Vendor=") + c.vendor) << c.what;
    EXPECT_EQ(instance[4], std::string("Location=") + c.location) << c.what;
  }
}

TEST_F(VpdRecordsTest, RunOf7FToTheEndOfTheReplyGivesNoMaker) {
  EXPECT_EQ(dimm(Bytes(kReplySize, 0x7F))[3], "Vendor= ");
}

TEST_F(VpdRecordsTest, DimmLocationIsOneCharacterBehindTheLabel) {
  Bytes record = kDimmRecord;
  record[72] = 0;
  EXPECT_EQ(dimm(record)[4], "Location=");
  EXPECT_EQ(dimm(record, "Node 2")[4], "Location=Node 2: ");
  record[72] = 0x01;  // makers use numbers as well; a byte is a character all the same
  EXPECT_EQ(dimm(record, "Node 2")[4], "Location=Node 2: \x01");
}

TEST_F(VpdRecordsTest, DimmRevisionIsATextOfTwoCharacters) {
  const struct {
    Bytes revision;
    std::string expected;
  } cases[] = {
      {{'B', '2'}, "B2"},
      {{'B', 0}, "B"},
      {{0, '2'}, ""},
      {{0x12, 0x34}, "\x12\x34"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(dimm(joined({zeros(91), c.revision}))[6], "RevisionLevel=" + c.expected);
  }
}

TEST_F(VpdRecordsTest, DimmSerialNumberIsEightDigitsOrEmpty) {
  const struct {
    Bytes serial;
    const char* expected;
  } cases[] = {
      {{0, 0, 0, 0}, ""},
      {{0, 0, 0, 1}, "00000001"},
      {{1, 0, 0, 0}, "01000000"},
      {{0x12, 0x34, 0x56, 0x78}, "12345678"},
      {{0x9A, 0xBC, 0xDE, 0xF0}, "9ABCDEF0"},
  };
  for (const auto& c : cases) {
    // The date before and the byte behind it are no part of it.
    EXPECT_EQ(dimm(joined({zeros(93), {0xDD, 0xDD}, c.serial, {0xEE}})).back(),
              std::string("SerialNumber=") + c.expected);
  }
}

TEST_F(VpdRecordsTest, EachInstanceIsAppended) {
  EXPECT_EQ(decode(Decoder::kPlanar, {}, "", "Planar"), 0);
  EXPECT_EQ(decode(Decoder::kCommon, {}, "", "Processor Card"), 0);
  EXPECT_EQ(decode(Decoder::kDimm, {}, "", "DIMM"), 0);
  const auto instances = published(plugin.vpdInstances);
  ASSERT_EQ(instances.size(), 3U);
  EXPECT_EQ(instances[0][1], "Name=Planar");
  EXPECT_EQ(instances[1][0], "Name=Processor Card");
  EXPECT_EQ(instances[2][0], "Name=DIMM 3");
}

TEST_F(VpdRecordsTest, IpmiFruSourceMakesEveryInstanceNeedless) {
  plugin.ipmiFruExists = true;
  useFaults({}, {"KRXSG_Vpd"});  // not even the class is looked up
  for (const auto decoder : {Decoder::kCommon, Decoder::kDimm, Decoder::kPlanar}) {
    EXPECT_EQ(decode(decoder, kCommonRecord), 0);
  }
  EXPECT_TRUE(plugin.vpdInstances.empty());
  EXPECT_EQ(log, Log{});
}

TEST_F(VpdRecordsTest, EachRefusedPropertyIsLoggedAndDropsTheInstance) {
  struct Row {
    const char* property;
    const char* failure;
  };
  const struct {
    Decoder decoder;
    std::vector<Row> rows;
  } cases[] = {
      {Decoder::kCommon,
       {{"Name", "Error adding VPD data"},
        {"IdentifyingNumber", "Error adding IdentifyingNumber"},
        {"Location", "Error adding Location Data"},
        {"PartNumber", "Error adding PartNumber"},
        {"SerialNumber", "Error adding SerialNumber"},
        {"FRUNumber", "Error adding FRUNumber"},
        {"DevicePrefix", "Error adding DevicePrefix"},
        {"Vendor", "Error adding Vendor Data"},
        {"SlotNumber", "Error adding SlotNumber"}}},
      {Decoder::kDimm,
       {{"Name", "Error adding Name"},
        {"IdentifyingNumber", "Error adding IdentifyingNumber"},
        {"FRUNumber", "Error adding FRUNumber"},
        {"Vendor", "Error adding Vendor"},
        {"Location", "Error adding Location"},
        {"PartNumber", "Error adding PartNumber"},
        {"RevisionLevel", "Error adding RevisionLevel"},
        {"SerialNumber", "Error adding SerialNumber"}}},
      {Decoder::kPlanar,
       {{"IdentifyingNumber", "Error adding IdentifyingNumber"},
        {"Name", "Error adding Name"},
        {"Vendor", "Error adding Vendor"},
        {"FRUNumber", "Error adding FRUNumber"},
        {"Location", "Error adding Location"},
        {"PartNumber", "Error adding PartNumber"},
        {"SerialNumber", "Error adding SerialNumber"}}},
  };
  for (const auto& c : cases) {
    for (std::size_t i = 0; i < c.rows.size(); ++i) {
      // Any call behind the refused one would end in an exception that passes.
      const Fault refusal = {.operation = CimOperation::kSetProperty,
                             .className = "KRXSG_Vpd",
                             .propertyName = c.rows[i].property,
                             .nth = std::nullopt,
                             .throwsRuntimeError = false};
      const Fault next = {.operation = CimOperation::kSetProperty,
                          .className = {},
                          .propertyName = {},
                          .nth = static_cast<unsigned>(i + 2),
                          .throwsRuntimeError = true};
      useFaults({refusal, next});
      EXPECT_EQ(decode(c.decoder, kCommonRecord), 3) << c.rows[i].failure;
      EXPECT_EQ(takeLog(), (Log{{0, c.rows[i].failure}}));
      EXPECT_TRUE(plugin.vpdInstances.empty()) << c.rows[i].failure;
    }
  }
}

TEST_F(VpdRecordsTest, RefusedInstanceIsLogged) {
  const Fault refusal = {.operation = CimOperation::kCreateInstance,
                         .className = "KRXSG_Vpd",
                         .propertyName = {},
                         .nth = std::nullopt,
                         .throwsRuntimeError = false};
  for (const auto decoder : {Decoder::kCommon, Decoder::kDimm, Decoder::kPlanar}) {
    useFaults({}, {"KRXSG_Vpd"});
    EXPECT_EQ(decode(decoder, {}), 3);
    useFaults({refusal});
    EXPECT_EQ(decode(decoder, {}), 3);
    EXPECT_EQ(takeLog(), (Log{{0, "Error adding KRXSG_VPD class"},  //
                              {0, "Error adding KRXSG_VPD class"}}));
  }
  EXPECT_TRUE(plugin.vpdInstances.empty());
}

TEST_F(VpdRecordsTest, OtherExceptionsPass) {
  for (const auto operation :
       {CimOperation::kGetClass, CimOperation::kCreateInstance, CimOperation::kSetProperty}) {
    for (const auto decoder : {Decoder::kCommon, Decoder::kDimm, Decoder::kPlanar}) {
      useFaults({{.operation = operation,
                  .className = "KRXSG_Vpd",
                  .propertyName = {},
                  .nth = std::nullopt,
                  .throwsRuntimeError = true}});
      try {
        decode(decoder, {});
        FAIL() << "no exception";
      } catch (const TVELException&) {
        FAIL() << "another exception";
      } catch (const std::runtime_error&) {
      }
    }
  }
  EXPECT_TRUE(plugin.vpdInstances.empty());
  EXPECT_EQ(log, Log{});
}

TEST(DimmBytesTotalOffset, IsTheSecondSpdByte) { EXPECT_EQ(DIMM_BYTES_TOTAL_OFFSET, 1); }

}  // namespace
}  // namespace spfirmwarevpd::test
