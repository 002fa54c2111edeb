// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/view.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

// "OFFSET: PAIRS", with the count of bytes that are not there; what the view has not is told as such.
std::string told(const char* line, const View& view) {
  const auto place = placeOf(originOf(line), view);
  if (!place) return "nothing";
  const std::string missing = place->missing > 0 ? " -" + std::to_string(place->missing) : "";
  return std::to_string(place->offset) + ": " + hexPairs(place->bytes) + missing;
}

TEST(View, HasTheBytesOfAReply) {
  const Reply reply{Source::kDotCommand,      bytesOfHex("04 0B 02"), bytesOfHex("7F 00"), 0, 3,
                    bytesOfHex("41 42 43 44")};
  const View view{{&reply}, {}, std::nullopt, nullptr, 0, nullptr};
  const struct {
    const char* line;
    const char* place;
  } cases[] = {
      {"DotCommand.VEL|04 0B n|data 7F 00|bytes 1-2|text", "1: 42 43"},
      {"DotCommand.VEL|04 0B 02|byte 3|text", "3: 44"},
      {"DotCommand.VEL|04 0B n|bytes 3-5|text", "3: 44 00 00 -2"},
      {"DotCommand.VEL|04 0B n|bytes 9-9|text", "9: 00 -1"},
      {"DotCommand.VEL|04 0B n|bytes 2-|text", "2: 43 44"},
      {"DotCommand.VEL|04 0B n|bytes 0-|text", "0: 41 42 43"},
      {"DotCommand.VEL|04 0B n|bytes 9-|text", "9: "},
      {"DotCommand.VEL|04 0B n|bytes 0-4000000000|text", "nothing"},
      {"DotCommand.VEL|04 0B n|bytes 4000000000-|text", "nothing"},
      {"DotCommand.VEL|04 0B n|bytes 3-2|text", "nothing"},
      {"DotCommand.VEL|04 0B n|data 80 00|byte 3|text", "nothing"},
      {"DotCommand.VEL|04 0C n|byte 3|text", "nothing"},
      {"DotCommand.VEL|04 0B|byte 3|text", "nothing"},
      {"TamberCommand.VEL|04 0B 02|byte 3|text", "nothing"},
      {"Constant.VEL|x", "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.place, told(c.line, view)) << c.line;
}

TEST(View, HasTheBytesOfAStructure) {
  // Type 0, 6 bytes, handle 0001; the strings' numbers 2 and 9; "KRX", "1.08".
  const Structure structure{bytesOfHex("00 06 01 00 02 09 4B 52 58 00 31 2E 30 38 00 00"), 0, 1};
  View view;
  view.structures[0] = &structure;
  const struct {
    const char* line;
    const char* place;
  } cases[] = {
      {"SMBIOS.DMTF|type 0|offset 4|string|text", "10: 31 2E 30 38"},
      {"SMBIOS.DMTF|type 0|offset 4|whole string|text", "10: 31 2E 30 38"},
      {"SMBIOS.DMTF|type 0|offset 5|string|text", "0: "},
      {"SMBIOS.DMTF|type 0|offset 4|uint16|text", "4: 02 09"},
      {"SMBIOS.DMTF|type 0|offset 15|uint32|text", "15: 00 00 00 00 -3"},
      {"SMBIOS.DMTF|type 0|offset 200|string|text", "0: "},
      {"SMBIOS.DMTF|type 0|offset 2000000000|uint32|text", "2000000000: 00 00 00 00 -4"},
      {"SMBIOS.DMTF|type 0|offset -1|whole string|text", "0: "},
      {"SMBIOS.DMTF|type 0|string with 1.|text", "nothing"},
      {"SMBIOS.DMTF|type 1|offset 4|string|text", "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.place, told(c.line, view)) << c.line;
  view.string = StringPlace{&structure, 6, "KRX"};
  EXPECT_EQ("6: 4B 52 58", told("SMBIOS.DMTF|type 0|string with RX|text", view));
}

TEST(View, AStructureOfNothingHasZeros) {
  const Structure structure{{}, 0, 1};
  View view;
  view.structures[0] = &structure;
  EXPECT_EQ("0: ", told("SMBIOS.DMTF|type 0|offset 4|string|text", view));
  EXPECT_EQ("4: 00 -1", told("SMBIOS.DMTF|type 0|offset 4|uint8|text", view));
}

TEST(View, HasTheFieldsOfAFruDevice) {
  // Common header with a board area at 8; two fields, an end mark and the checksum.
  const FruDevice fru{3, bytesOfHex("02 00 51 11 0C 20 03"),
                      bytesOfHex("01 00 00 01 00 00 00 FE"
                                 "01 02 19 01 02 03 C2 41 42 C1 43 C1 00 00 00 D4")};
  View view;
  view.fru = &fru;
  const struct {
    const char* line;
    const char* place;
  } cases[] = {
      {"IPMI.FRU|board area|field 1|typed text", "6: C2 41 42"},
      {"IPMI.FRU|board area|field 2|typed text", "nothing"},
      {"IPMI.FRU|board area|bytes 3-5|minutes since 1996", "3: 01 02 03"},
      {"IPMI.FRU|product area|field 1|typed text", "nothing"},
      {"IPMI.FRU|what was wrong|text", "0: "},
      {"IPMI.SDR|type 17|byte 6|decimal", "6: 03"},
      {"IPMI.SDR|type 17|bytes 5-|decimal", "5: 20 03"},
      {"IPMI.SDR|type 18|byte 6|decimal", "nothing"},
      {"IPMI.SDR|type 17|bytes 0-4000000000|decimal", "nothing"},
      {"IPMI.FRU|board area|bytes 5-3|minutes since 1996", "nothing"},
      {"IPMI.FRU|board area|field x|typed text", "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.place, told(c.line, view)) << c.line;
}

}  // namespace
}  // namespace velhost
