// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/schemaexplained.h"

#include <gtest/gtest.h>

#include <array>

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

constexpr char kQualifiers[] = R"(
Qualifier Description : string, Scope(any);
Qualifier Abstract : boolean = false, Scope(class), Flavor(Restricted);
Qualifier Key : boolean = false, Scope(property);
Qualifier LeftTo : string[], Scope(class), Flavor(Restricted);
Qualifier MachineTypes : string[], Scope(class), Flavor(Restricted);
Qualifier MappingStrings : string[], Scope(class, property);
Qualifier MaxLen : uint32, Scope(property);
Qualifier Override : string, Scope(property), Flavor(Restricted);
Qualifier Provider : string, Scope(any), Flavor(Restricted);
Qualifier ValueMap : string[], Scope(property);
Qualifier Values : string[], Scope(property);
)";

constexpr char kClasses[] = R"(
[Abstract, Description("Base")] class CIM_Base { string Id; };
[Description("Firmware of a fan\n\x1B[31m"), Provider("FanCollector"),
 LeftTo { "MINE_Other", "IPMI.VEL" }, MachineTypes { "1", "2" },
 MappingStrings { "Instance.VEL|KRXSG_USBDevice.Description|has fan" }]
class MINE_Fan : CIM_Base {
  [Key, Description("The fan"), MappingStrings { "Mine.ELSE|sensor" }] uint8 Fan;
  [Description("How it runs"), ValueMap { "0", "1" }, Values { "off", "on" },
   MappingStrings { "IPMI.VEL|06 52|byte 5|decimal|when Fan is set", "IPMI.VEL|06 52|byte 6|decimal",
                    "Constant.VEL|0" }] uint16 State;
  [Description("Level"), MaxLen(8)] string Version;
};
[Description("Other fan"), LeftTo { "MINE_Fan" }] class MINE_Other {};
)";

class SchemaExplained : public ::testing::Test {
 protected:
  static host::SchemaPtr read() {
    const std::array files{host::SchemaFile{"test.mof", std::string(kQualifiers) + kClasses}};
    return host::parseSchema(files);
  }

  host::SchemaPtr schema_ = read();
  const host::ClassSchema& fan_ = *host::findClass(*schema_, "MINE_Fan");
};

TEST_F(SchemaExplained, AClassHasItsFactsAndItsProperties) {
  EXPECT_EQ(
      "MINE_Fan: Firmware of a fan\\n\\x1b[31m\n"
      "  collector  FanCollector\n"
      "  derives    CIM_Base\n"
      "  keys       Fan\n"
      "  left to    MINE_Other, where that has instances or\n"
      "             a BMC answers\n"
      "  only on    machine types 1, 2\n"
      "  only where Description of a KRXSG_USBDevice has fan\n"
      "\n"
      "  Id  string\n"
      "      no collector ever fills it\n"
      "\n"
      "  Fan  uint8, key\n"
      "      The fan\n"
      "      from: Mine.ELSE|sensor\n"
      "\n"
      "  State  uint16\n"
      "      How it runs\n"
      "      from: IPMI command 06 52, fixed\n"
      "\n"
      "  Version  string, at most 8 characters\n"
      "      Level\n"
      "      no collector ever fills it\n",
      classExplained(fan_, 53));
}

TEST_F(SchemaExplained, APropertyHasItsLinesAsTheyStandAndInWords) {
  EXPECT_EQ(
      "MINE_Fan.State: How it runs\n"
      "  type       uint16\n"
      "  values     0 off, 1 on\n"
      "\n"
      "IPMI.VEL|06 52|byte 5|decimal|when Fan is set\n"
      "  Byte 5 of the reply to IPMI command 06 52: the byte as a\n"
      "  decimal number; where Fan is set.\n"
      "\n"
      "IPMI.VEL|06 52|byte 6|decimal\n"
      "  Byte 6 of the reply to IPMI command 06 52: the byte as a\n"
      "  decimal number.\n"
      "\n"
      "Constant.VEL|0\n"
      "  Fixed: \"0\".\n",
      propertyExplained(fan_, *host::findProperty(fan_, "State"), 60));
}

TEST_F(SchemaExplained, ANotationOfItsCollectorsOwnStandsAsItIs) {
  EXPECT_EQ("Mine.ELSE|sensor\n  In the notation of its collector.\n",
            lineExplained("Mine.ELSE|sensor", 60));
  EXPECT_EQ(
      "MINE_Fan.Version: Level\n  type       string, at most 8 characters\n"
      "  no collector ever fills it\n",
      propertyExplained(fan_, *host::findProperty(fan_, "Version"), 60));
}

TEST_F(SchemaExplained, AClassMayBeAnybodys) {
  EXPECT_EQ(
      "MINE_Other: Other fan\n"
      "  collector  whoever adds instances\n"
      "  left to    MINE_Fan, where that has instances\n",
      classHead(*host::findClass(*schema_, "MINE_Other"), 60));
}

TEST_F(SchemaExplained, AnAbstractClassHasNoCollector) {
  EXPECT_EQ("CIM_Base: Base\n  collector  none: other classes derive from it\n",
            classHead(*host::findClass(*schema_, "CIM_Base"), 60));
}

}  // namespace
}  // namespace velhost
