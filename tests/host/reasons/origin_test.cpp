// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/origin.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;

// What was read of a line, piece by piece; the pieces that say nothing are left out.
std::string told(const Origin& origin) {
  std::ostringstream text;
  text << static_cast<int>(origin.source);
  if (!origin.command.empty()) text << " command " << hexPairs(origin.command);
  if (origin.isNumbered) text << " n";
  if (origin.data) text << " data " << hexPairs(*origin.data);
  if (origin.firstByte > 0) text << " from " << origin.firstByte;
  if (origin.lastByte) text << " to " << *origin.lastByte;
  if (origin.structureType > 0) text << " type " << origin.structureType;
  if (origin.offset > 0) text << " offset " << origin.offset;
  for (const auto& [name, piece] :
       {std::pair("field", origin.field), std::pair("with", origin.contained),
        std::pair("class", origin.className), std::pair("property", origin.propertyName),
        std::pair("rule", origin.rule), std::pair("text", origin.text),
        std::pair("as", origin.shape)}) {
    if (!piece.empty()) text << ' ' << name << " [" << piece << ']';
  }
  for (const Condition& condition : origin.conditions) {
    text << " when " << condition.property << ' ' << static_cast<int>(condition.kind) << " ["
         << condition.text << ']';
  }
  return text.str();
}

TEST(Origin, EveryFormOfLineIsRead) {
  const struct {
    const char* line;
    const char* told;
  } cases[] = {
      {"DotCommand.VEL|04 03 05 07|byte 3|decimal",
       "0 command 04 03 05 07 from 3 to 3 rule [decimal]"},
      {"DotCommand.VEL|04 03 05 0B n|data 00 00 7F 00|bytes 64-71|JEP106 maker or blank|as "
       "{label}{}|"
       "when Name has DIMM",
       "0 command 04 03 05 0B n data 00 00 7F 00 from 64 to 71 rule [JEP106 maker or blank] as "
       "[{label}{}] when Name 4 [DIMM]"},
      {"TamberCommand.VEL|01 F1 F1 0F|bytes 3-|text", "1 command 01 F1 F1 0F from 3 rule [text]"},
      {"IPMI.VEL|06 52|data F5 68|bytes 9-|level",
       "2 command 06 52 data F5 68 from 9 rule [level]"},
      {"IPMI.SDR|type 17|byte 6|decimal", "3 command 0A 23 from 6 to 6 type 17 rule [decimal]"},
      {"IPMI.FRU|board area|field 4|typed text",
       "4 command 0A 11 field [field 4] rule [typed text] text [board area]"},
      {"IPMI.FRU|what was wrong|text", "4 command 0A 11 rule [text] text [what was wrong]"},
      {"SMBIOS.DMTF|type 17|offset 8|uint8|shift 16",
       "5 type 17 offset 8 field [uint8] rule [shift 16]"},
      {"SMBIOS.DMTF|type 11|string with $DS |build part|when SourceNode is unset",
       "5 type 11 with [$DS ] rule [build part] when SourceNode 1 []"},
      {"Instance.VEL|KRXSG_TapeDrive.DeviceID|between REV_ and \\",
       "6 class [KRXSG_TapeDrive] property [DeviceID] rule [between REV_ and \\]"},
      {"Sysfs.Linux|usb_device|as {manufacturer} {product}",
       "7 text [usb_device] as [{manufacturer} {product}]"},
      {"Constant.VEL|1.3.11.37", "8 text [1.3.11.37]"},
      {"Constant.VEL| ", "8 text [ ]"},
      {"Constant.VEL||when SourceNode is set and Name lacks Diag",
       "8 when SourceNode 0 [] when Name 5 [Diag]"},
      {"Derived.VEL|Node {sp}|when A is B and C is not D and E is set",
       "9 text [Node {sp}] when A 2 [B] when C 3 [D] when E 0 []"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.told, told(originOf(c.line))) << c.line;
}

TEST(Origin, AnythingElseIsAnotherCollectorsOwn) {
  for (const char* const line : {"",
                                 "|",
                                 "Registry.MS|x",
                                 "DotCommand.VEL",
                                 "DotCommand.VEL|04 0|byte 1|text",
                                 "DotCommand.VEL|04|byte x|text",
                                 "DotCommand.VEL|04|bytes 1|text",
                                 "DotCommand.VEL|04|bytes 1-x|text",
                                 "DotCommand.VEL|04|date 00|byte 1|text",
                                 "DotCommand.VEL|04|data 0|byte 1|text",
                                 "DotCommand.VEL|04|byte 99999999999999999999|text",
                                 "SMBIOS.DMTF|type x|offset 1|uint8|text",
                                 "SMBIOS.DMTF|type 1|string without X|text",
                                 "SMBIOS.DMTF|type 1|offset -|uint8|text",
                                 "Instance.VEL|KRXSG_TapeDrive|text",
                                 "Instance.VEL|A.B",
                                 "Constant.VEL",
                                 "Constant.VEL|a|b",
                                 "Constant.VEL|a|when b",
                                 "Constant.VEL|a|when b was c"}) {
    EXPECT_EQ("10", told(originOf(line))) << line;
    EXPECT_EQ(line, originOf(line).line);
  }
}

// The schema in the tree is written in the notation.
TEST(Origin, EveryLineOfTheSchemaIsRead) {
  int lines = 0;
  for (const auto& cimClass : NKRXVEL20::host::schema()) {
    for (const auto& property : cimClass.properties) {
      for (const Origin& origin : originsOf(property)) {
        EXPECT_NE(Source::kOther, origin.source) << cimClass.name << ": " << origin.line;
        ++lines;
      }
    }
  }
  EXPECT_GT(lines, 150);
}

TEST(Origin, ConditionsHoldForAnInstanceOrDoNot) {
  const NKRXVEL20::host::PropertyList instance{{"Name", TCIMValue("DIMM 1")},
                                               {"Blank", TCIMValue("")},
                                               {"Node", TCIMValue(std::uint8_t{2})}};
  const struct {
    const char* conditions;
    bool holds;
  } cases[] = {
      {"Name is set", true},
      {"None is set", false},
      {"Blank is set", false},
      {"None is unset", true},
      {"Name is unset", false},
      {"Name is DIMM 1", true},
      {"Name is DIMM", false},
      {"Node is 2", true},
      {"Name is not DIMM", true},
      {"Node is not 2", false},
      {"Name has DIMM", true},
      {"Name has Power", false},
      {"Name lacks DIMM", false},
      {"None lacks DIMM", true},
      {"Name has DIMM and Node is 2", true},
      {"Name has DIMM and Node is 1", false},
  };
  for (const auto& c : cases) {
    const std::string line = std::string("Constant.VEL|x|when ") + c.conditions;
    EXPECT_EQ(c.holds, holdsFor(originOf(line), instance)) << c.conditions;
  }
  EXPECT_TRUE(holdsFor(originOf("Constant.VEL|x"), instance));
}

}  // namespace
}  // namespace velhost
