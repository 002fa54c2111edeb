// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/machineexplained.h"

#include <gtest/gtest.h>

#include "tests/host/explanation/explanationsample.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::findProperty;

class MachineExplained : public ::testing::Test {
 protected:
  MachineExplained() {
    result_.requested = {"KRXSG_Vpd"};
    result_.states = {{"KRXSG_Vpd", "SPFirmwareVPD", State::kPresent, "", {}}};
  }

  std::string explained(const char* property, std::size_t width = 80,
                        std::optional<std::uint64_t> node = std::nullopt) const {
    const auto& cimClass = *findClass("KRXSG_Vpd");
    const Inquiry inquiry{cimClass, context_, result_, evidence_, node, width};
    return propertyOnMachine(inquiry, *findProperty(cimClass, property));
  }

  QueryContext context_{"file", "a\x1B server", {}};
  QueryResult result_;
  Evidence evidence_;
};

TEST_F(MachineExplained, AValueStandsWithItsBytes) {
  evidence_.replies = {dimmReply(0, 1, "P1")};
  result_.instances = {dimm("DIMM 1", "P1"), dimm("DIMM 2", "P2")};
  result_.states.front().state = State::kPartial;
  result_.states.front().reason = "1 of 2 commands was not answered";
  result_.states.front().steps = {"command 04 03 05 0B 02 was refused once"};
  const std::string text = explained("PartNumber");
  EXPECT_EQ(
      "KRXSG_Vpd.PartNumber: Part number\n"
      "  type       string, at most 18 characters\n"
      "\n"
      "On a\\x1b server: 2 instances; partial: 1 of 2 commands was not answered\n"
      "\n"
      "DotCommand.VEL|04 03 05 0B n|data 00 00 7F 00|bytes 73-90|text|when Name has\n"
      "    DIMM\n"
      "  Bytes 73 to 90 of the reply to dot command 04 03 05 0B n with data 00 00 7F 00\n"
      "  (n is the component's number): the text up to the first zero byte; where Name\n"
      "  has \"DIMM\".\n"
      "\n"
      "  DIMM 1: \"P1\"\n"
      "    SP 1, dot command 04 03 05 0B 01, data 00 00 7F 00: 99 bytes in reply\n"
      "      73  50 31 00 00 00 00 00 00 00 00 00 00 00 00 00 00  |P1..............|\n"
      "      89  00 00                                            |..|\n",
      text.substr(0, text.find("\nLines that gave")));
  EXPECT_EQ(
      "\nNot confirmed: no line gives this value from what was seen\n"
      "  DIMM 2: \"P2\"\n"
      "\n"
      "Steps that failed:\n"
      "  command 04 03 05 0B 02 was refused once\n",
      text.substr(text.find("\nNot confirmed")));
}

TEST_F(MachineExplained, TheRuleIsToldWhereItMakesADifference) {
  evidence_.replies = {dimmReply(0, 1, "P1")};
  evidence_.replies.front().bytes[95] = 0x40;
  result_.instances = {dimm("DIMM 1", "P1")};
  result_.instances.front().properties.emplace_back("SerialNumber", TCIMValue("40000000"));
  result_.instances.front().properties.emplace_back("Vendor", TCIMValue("KRX"));
  EXPECT_NE(
      std::string::npos,
      explained("SerialNumber")
          .find(
              "      95  40 00 00 00  |@...|\n"
              "    40 00 00 00 becomes \"40000000\": two hexadecimal digits a byte; nothing where\n"
              "      all are zero\n"));
  EXPECT_NE(std::string::npos,
            explained("Vendor").find("    by a rule that is not worked out again here: the maker"));
  EXPECT_NE(std::string::npos, explained("FRUNumber").find("\nNot set:\n  DIMM 1\n"));
}

TEST_F(MachineExplained, AFewInstancesOfMany) {
  for (int i = 0; i < 1030; ++i) {
    result_.instances.push_back(dimm("Node " + std::to_string(i % 2 + 1) + ": DIMM 1", "P1"));
  }
  const std::string all = explained("PartNumber");
  EXPECT_NE(std::string::npos,
            all.find("\nand 6 instances more; --node N shows those of one node\n"));
  const std::string some = explained("PartNumber", 80, 2);
  EXPECT_NE(std::string::npos, some.find("server: 515 instances of node 2; present\n"));
  EXPECT_EQ(std::string::npos, some.find("Node 1"));
}

TEST_F(MachineExplained, HostileTextsStayInTheirPlace) {
  const std::string part = std::string(10 << 20, '\xFF') + "\n\x1B[2J";
  result_.instances = {dimm("DIMM 1\n\x9B", part),
                       dimm("DIMM " + std::string(10 << 20, 'x'), "\x7F")};
  const std::string text = explained("PartNumber");
  EXPECT_LT(text.size(), 4000U);
  for (const char c : text) EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << int{c};
}

TEST_F(MachineExplained, AClassHasItsFirstInstance) {
  evidence_.replies = {dimmReply(0, 1, "P1"), dimmReply(0, 2, "P2")};
  result_.instances = {dimm("DIMM 1", "P1"), dimm("DIMM 2", "P2")};
  result_.instances.front().properties.emplace_back("Vendor", TCIMValue("KRX"));
  const Inquiry inquiry{*findClass("KRXSG_Vpd"), context_, result_, evidence_, std::nullopt, 80};
  const std::string text = classOnMachine(inquiry);
  EXPECT_NE(std::string::npos,
            text.find("\nOn a\\x1b server: 2 instances; present\n\nThe first is DIMM 1:\n"
                      "  Name  \"DIMM 1\"\n      made up of others\n"));
  EXPECT_NE(
      std::string::npos,
      text.find("  PartNumber  \"P1\"\n"
                "      SP 1, dot command 04 03 05 0B 01, data 00 00 7F 00: 99 bytes in reply,\n"
                "        from byte 73 on\n"));
  EXPECT_NE(std::string::npos,
            text.find("\n        from byte 64 on, by a rule that is not worked out again here\n"));
  EXPECT_NE(std::string::npos, text.find("  SerialNumber  not set\n"));
}

TEST_F(MachineExplained, NothingThereIsTold) {
  result_.states.front() = {"KRXSG_Vpd",
                            "SPFirmwareVPD",
                            State::kUnanswered,
                            "no SP answers dot commands",
                            {"command 04 was refused twice"}};
  const Inquiry inquiry{*findClass("KRXSG_Vpd"), context_, result_, evidence_, std::nullopt, 80};
  const std::string text = classOnMachine(inquiry);
  EXPECT_EQ(
      "On a\\x1b server: 0 instances; unanswered: no SP answers dot commands\n\n"
      "Steps that failed:\n  command 04 was refused twice\n",
      text.substr(text.find("On a")));
}

// A class of which nothing was seen but its one instance.
class DeviceExplained : public ::testing::Test {
 protected:
  static QueryResult resultWith(const char* className,
                                const NKRXVEL20::host::PropertyList& properties) {
    QueryResult result;
    result.states = {{className, "DeviceInventory", State::kPresent, "", {}}};
    result.instances = {{className, properties}};
    return result;
  }

  static std::string explained(const QueryResult& result, const char* property) {
    const auto& cimClass = *findClass(result.states.front().className);
    const std::string text =
        propertyOnMachine({cimClass, {"file", "srv1", {}}, result, {}, std::nullopt, 80},
                          *findProperty(cimClass, property));
    return text.substr(text.find("On srv1"));
  }

  QueryResult result_ = resultWith("KRXSG_USBDevice", {{"DeviceID", TCIMValue("USB\\VID_1")},
                                                       {"Description", TCIMValue("A hub")}});
};

TEST_F(DeviceExplained, WhatTheCollectorAloneSeesIsNotConfirmed) {
  EXPECT_EQ(
      "On srv1: 1 instance; present\n"
      "\n"
      "Lines that gave no value here:\n"
      "  Sysfs.Linux|usb_device|as {manufacturer} {product}\n"
      "\n"
      "From what the collector alone sees:\n"
      "  USB\\VID_1: \"A hub\"\n",
      explained(result_, "Description"));
}

TEST_F(DeviceExplained, WhereTheSchemaHasNoLineThatIsTold) {
  EXPECT_EQ(
      "On srv1: 1 instance; present\n"
      "\n"
      "The schema does not tell where these come from:\n"
      "  instance 1: \"1\"\n",
      explained(resultWith("KRXSG_PostBIOSVPD", {{"Version", TCIMValue("1")}}), "Version"));
}

TEST_F(DeviceExplained, AClassEndsWithWhatElseThereIs) {
  const auto& cimClass = *findClass("KRXSG_USBDevice");
  const std::string text =
      classOnMachine({cimClass, {"file", "srv1", {}}, result_, {}, std::nullopt, 80});
  EXPECT_TRUE(text.ends_with(
      "\n\nWith a property behind the class, KRXSG_USBDevice.PROPERTY, the bytes of each\n"
      "  instance are shown.\n"))
      << text;
  EXPECT_NE(std::string::npos, text.find("\n\nIt is USB\\VID_1:\n")) << text;
  EXPECT_NE(std::string::npos,
            text.find("  Description  \"A hub\"\n      what the collector alone sees\n"))
      << text;
}

TEST_F(MachineExplained, BytesThatAreNotThereCountAsZero) {
  evidence_.replies = {dimmReply(0, 1, "P1")};
  evidence_.replies.front().bytes.resize(80);
  result_.instances = {dimm("DIMM 1", "P1")};
  const std::string text = explained("PartNumber");
  EXPECT_NE(
      std::string::npos,
      text.find("    SP 1, dot command 04 03 05 0B 01, data 00 00 7F 00: 80 bytes in reply; the\n"
                "      last 11 bytes are not there and count as zero\n"
                "      73  50 31 00 00 00 00 00 00 00 00 00 00 00 00 00 00  |P1..............|\n"
                "      89  00 00                                            |..|\n"))
      << text;
}

TEST_F(MachineExplained, TheFirstStepsOfMany) {
  result_.states.front().steps.assign(32, "step");
  const std::string all = explained("PartNumber");
  EXPECT_TRUE(all.ends_with("\n  step\n")) << all;
  result_.states.front().steps.assign(35, "step");
  const std::string some = explained("PartNumber");
  EXPECT_TRUE(some.ends_with("\n  step\n  and 3 more, which query --why tells\n")) << some;
  EXPECT_EQ(all.size() + std::string("  and 3 more, which query --why tells\n").size(),
            some.size());
}

}  // namespace
}  // namespace velhost
