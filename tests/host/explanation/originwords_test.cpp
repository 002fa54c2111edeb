// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/originwords.h"

#include <gtest/gtest.h>

#include "tests/host/explanation/explanationsample.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

TEST(OriginWords, EveryFormOfLineHasASentence) {
  const struct {
    const char* line;
    const char* words;
  } cases[] = {
      {"DotCommand.VEL|04 03 05 0B n|data 00 00 7F 00|bytes 73-90|text|when Name has DIMM",
       "bytes 73 to 90 of the reply to dot command 04 03 05 0B n with data 00 00 7F 00 (n is the "
       "component's number): the text up to the first zero byte; where Name has \"DIMM\""},
      {"DotCommand.VEL|04 03 05 07|byte 0|decimal",
       "byte 0 of the reply to dot command 04 03 05 07: the byte as a decimal number"},
      {"TamberCommand.VEL|01 F1 F1 0F|bytes 3-|text",
       "the bytes from 3 on of the reply to Tamber command 01 F1 F1 0F: the text up to the first "
       "zero byte"},
      {"IPMI.VEL|06 01|bytes 7-8|BCD version",
       "bytes 7 to 8 of the reply to IPMI command 06 01: seven bits of the first byte in decimal, "
       "a "
       "point, the two digits of the second"},
      {"IPMI.SDR|type 17|byte 6|decimal",
       "byte 6 of the BMC's record of type 17 that locates the FRU device: the byte as a decimal "
       "number"},
      {"IPMI.FRU|board area|field 4|typed text",
       "field 4 of the board area of the FRU device: a text behind a byte that gives its encoding "
       "and length, without blanks around it"},
      {"IPMI.FRU|chassis area|byte 2|chassis type",
       "byte 2 of the chassis area of the FRU device: the standard's name of that chassis type "
       "(DSP0134, 7.4.1)"},
      {"IPMI.FRU|what was wrong|text", "what was wrong with the FRU device or its areas"},
      {"SMBIOS.DMTF|type 0|offset 6|uint16|shift 16",
       "the uint16 at offset 6 of SMBIOS type 0: the number, 16 bits higher"},
      {"SMBIOS.DMTF|type 0|offset 5|string|version part",
       "the string of SMBIOS type 0 whose number is at offset 5: letters and digits only; of these "
       "the digits in front, otherwise those at the end"},
      {"SMBIOS.DMTF|type 11|string with $DS |before -|as {}: {SourceNode}|when A is unset and B is "
       "x",
       "the string of SMBIOS type 11 with \"$DS \": what stands before the first \"-\"; it stands "
       "in "
       "\"{}: {SourceNode}\" ({} the value); where A is not set and B is \"x\""},
      {"Instance.VEL|KRXSG_TapeDrive.DeviceID|between REV_ and \\",
       "DeviceID of a KRXSG_TapeDrive: what stands between the first \"REV_\" and the first \"\\\" "
       "behind it"},
      {"Sysfs.Linux|usb_device|as {manufacturer} {product}",
       "attributes of a usb_device in sysfs; it stands in \"{manufacturer} {product}\""},
      {"Constant.VEL|1.3.11.37", "fixed: \"1.3.11.37\""},
      {"Constant.VEL| |when A is not x", "fixed: a blank; where A is not \"x\""},
      {"Constant.VEL||when A lacks x", "fixed: the empty text; where A lacks \"x\""},
      {"Derived.VEL|{label}DIMM {n}",
       "made up: \"{label}DIMM {n}\" ({label} \"Node N: \" where there are several SPs, {n} the "
       "component's number)"},
      {"Derived.VEL|{sp} {node} {structure}",
       "made up: \"{sp} {node} {structure}\" ({sp} the number of the SP that was asked, {node} the "
       "number of the node, {structure} the number of the structure among those of its type)"},
      {"Mine.ELSE|sensor 3\x1B[2J", "Mine.ELSE|sensor 3\x1B[2J"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, originInWords(originOf(c.line))) << c.line;
}

TEST(OriginWords, EveryLineOfTheSchemaHasASentence) {
  for (const auto& cimClass : NKRXVEL20::host::schema()) {
    for (const auto& property : cimClass.properties) {
      for (const Origin& origin : originsOf(property)) {
        EXPECT_NE(origin.line, originInWords(origin));
        EXPECT_EQ(std::string::npos, originInWords(origin).find('|')) << origin.line;
      }
    }
  }
}

TEST(OriginWords, TellWhatWasAsked) {
  const Reply dot = dimmReply(1, 4, "P1");
  const Reply tamber{Source::kTamberCommand, {1, 0xF1}, {}, 0, 2, {0, 0, 0, 65, 66}};
  const Reply ipmi{Source::kIpmi, {6, 1}, {}, 0, 16, Bytes(16)};
  const Structure bios{bytesOfHex("00 06 02 01 02 01 4B 52 58 00 31 00 00"), 0, 1};
  const Structure nothing{{}, 1, 1};
  const FruDevice fru{3, bytesOfHex("02 00 51 11 0C 20 03"), {}};
  const NKRXVEL20::host::PublishedInstance other{"KRXSG_TapeDrive", {}};
  View view{{&dot, &tamber, &ipmi}, {{0, &bios}, {1, &nothing}}, std::nullopt, &other, 2, &fru};
  const struct {
    const char* line;
    const char* words;
  } cases[] = {
      {"DotCommand.VEL|04 03 05 0B n|byte 1|text",
       "SP 2, dot command 04 03 05 0B 04, data 00 00 7F 00: 99 bytes in reply"},
      {"TamberCommand.VEL|01 F1|byte 3|text", "Tamber command 01 F1: 5 bytes in reply"},
      {"IPMI.VEL|06 01|byte 3|text", "IPMI network function and command 06 01: 16 bytes in reply"},
      {"SMBIOS.DMTF|type 0|offset 4|string|text", "SMBIOS type 0, handle 0102h, string 2"},
      {"SMBIOS.DMTF|type 0|offset 4|uint8|decimal", "SMBIOS type 0, handle 0102h"},
      {"SMBIOS.DMTF|type 1|offset 4|string|text", "SMBIOS type 1: the read gave nothing"},
      {"Instance.VEL|KRXSG_TapeDrive.DeviceID|text", "KRXSG_TapeDrive 2, DeviceID"},
      {"IPMI.SDR|type 17|byte 6|decimal", "FRU device 3, the record of type 17 that locates it"},
      {"IPMI.FRU|what was wrong|text", "FRU device 3"},
      {"Constant.VEL|x", "fixed"},
      {"DotCommand.VEL|04 07|byte 1|text", "dot command 04 07"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, evidenceInWords(originOf(c.line), view)) << c.line;
}

}  // namespace
}  // namespace velhost
