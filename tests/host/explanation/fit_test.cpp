// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/fit.h"

#include <gtest/gtest.h>

#include "tests/host/explanation/explanationsample.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::PropertyList;

TEST(Fit, ALineGivesTheValueOrNot) {
  const Reply reply = dimmReply(1, 4, "P2G72");
  View view{{&reply}, {}, std::nullopt, nullptr, 0, nullptr};
  const PropertyList instance{{"Name", TCIMValue("Node 2: DIMM 4")},
                              {"PartNumber", TCIMValue("P2G72")},
                              {"IdentifyingNumber", TCIMValue("4")},
                              {"Location", TCIMValue("Node 2: P2G72")},
                              {"Vendor", TCIMValue("KRX")}};
  const Subject subject{*findClass("KRXSG_Vpd"), instance};
  const struct {
    const char* property;
    const char* line;
    Fit fit;
  } cases[] = {
      {"PartNumber", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|text", Fit::kGives},
      {"PartNumber", "DotCommand.VEL|04 03 05 0B n|bytes 74-90|text", Fit::kOther},
      {"PartNumber", "DotCommand.VEL|04 03 05 0C n|bytes 73-90|text", Fit::kNothing},
      {"PartNumber", "Constant.VEL|P2G72", Fit::kGives},
      {"PartNumber", "Constant.VEL|P2G73", Fit::kOther},
      {"PartNumber", "Mine.ELSE|anything", Fit::kNothing},
      {"Vendor", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|JEP106 maker", Fit::kOpen},
      {"Vendor", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|JEP106 maker|as x{}", Fit::kOther},
      {"Vendor", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|JEP106 maker|as K{}", Fit::kOpen},
      {"Location", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|text|as {label}{}", Fit::kGives},
      {"Location", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|text|as {label}{}~", Fit::kOther},
      {"Location", "Derived.VEL|{label}{PartNumber}", Fit::kGives},
      {"Name", "Derived.VEL|{label}DIMM {n}", Fit::kGives},
      {"Name", "Derived.VEL|Node {sp}: DIMM {IdentifyingNumber}", Fit::kGives},
      {"Name", "Derived.VEL|Node {node}: DIMM {sp}", Fit::kOther},
      {"Name", "Derived.VEL|Node {node}: DIMM {structure}", Fit::kOther},
      {"Name", "Derived.VEL|{label}DIMM {n} ", Fit::kOther},
      {"RevisionLevel", "DotCommand.VEL|04 03 05 0B n|bytes 91-92|text", Fit::kGives},
      {"RevisionLevel", "DotCommand.VEL|04 03 05 0B n|bytes 73-90|text", Fit::kOther},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.fit, fitOf(originOf(c.line), c.property, subject, view)) << c.line;
}

// Of what SMBIOS tells nobody was asked: any node may be meant.
TEST(Fit, WithoutAReplyANumberIsANode) {
  const PropertyList instance{{"Name", TCIMValue("Node 12 : UEFI")},
                              {"PrimaryBIOS", TCIMValue(true)}};
  const Subject subject{*findClass("KRXSG_SystemBIOSElement"), instance};
  EXPECT_EQ(Fit::kGives, fitOf(originOf("Derived.VEL|Node {node} : UEFI"), "Name", subject, {}));
  EXPECT_EQ(Fit::kOther, fitOf(originOf("Derived.VEL|Node {n} : UEFI"), "Name", subject, {}));
  EXPECT_EQ(Fit::kGives, fitOf(originOf("Constant.VEL|TRUE"), "PrimaryBIOS", subject, {}));
}

TEST(Fit, ValuesHaveNames) {
  const auto& cimClass = *findClass("KRXSG_Vpd");
  EXPECT_EQ("", wordFor(cimClass, "Name", "3"));
  EXPECT_EQ("Running", wordFor(*findClass("KRXSG_cKVM"), "SoftwareElementState", "3"));
  EXPECT_EQ("", wordFor(*findClass("KRXSG_cKVM"), "SoftwareElementState", "4"));
  EXPECT_EQ("", wordFor(cimClass, "NoSuch", "3"));
}

TEST(Fit, PlaceholdersAreWhatStandsInBraces) {
  using Names = std::vector<std::string_view>;
  EXPECT_EQ((Names{"label", "", "A in words"}), placeholdersOf("x{label}{} {A in words}"));
  EXPECT_EQ(Names(), placeholdersOf("no } and {"));
}

}  // namespace
}  // namespace velhost
