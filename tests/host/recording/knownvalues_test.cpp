// SPDX-License-Identifier: Apache-2.0
#include "host/recording/knownvalues.h"

#include <gtest/gtest.h>

#include <utility>

#include "host/text/hextext.h"

namespace velhost {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Bytes replaced(const Pairs& values, Bytes bytes) {
  KnownValues known;
  for (const auto& [value, replacement] : values) known.add(value, replacement);
  known.seal();
  known.replaceIn(bytes);
  return bytes;
}

std::string replacedText(const Pairs& values, const std::string& text) {
  const Bytes bytes = replaced(values, {text.begin(), text.end()});
  return {bytes.begin(), bytes.end()};
}

TEST(KnownValues, TextsAreReplacedWhereverTheyStand) {
  const Pairs serial{{"KQ0K401", "GG0G001"}};
  const struct {
    const char* what;
    Pairs values;
    const char* text;
    const char* replaced;
  } cases[] = {
      {"alone", serial, "KQ0K401", "GG0G001"},
      {"in a text", serial, "SN=KQ0K401;", "SN=GG0G001;"},
      {"twice, one behind the other", serial, "KQ0K401KQ0K401", "GG0G001GG0G001"},
      {"behind its own beginning", serial, "KQKQ0K4KQ0K401", "KQKQ0K4GG0G001"},
      {"cut off", serial, "KQ0K40", "KQ0K40"},
      {"lower case", serial, "kq0k401", "gg0g001"},
      {"mixed case", serial, "Kq0k401", "Gg0g001"},
      {"case of the value's own", {{"kq0K", "gg0G"}}, "KQ0K kq0k kq0K", "GG0G gg0g gg0G"},
      {"values that differ in case",
       {{"kq01", "gg01"}, {"KQ01", "GG07"}},
       "KQ01 kq01",
       "GG07 gg01"},
      {"the longest at a place",
       {{"KQ0K", "GG0G"}, {"KQ0K401", "GG0G001"}, {"KQ0K40", "GG0G02"}},
       "KQ0K401 KQ0K40x KQ0Kx",
       "GG0G001 GG0G02x GG0Gx"},
      {"the first where two overlap",
       {{"ABCD12", "AAAA01"}, {"12WXYZ", "01GGGH"}},
       "ABCD12WXYZ",
       "AAAA01WXYZ"},
      {"what was put is left alone", {{"0002", "0001"}, {"0001", "0002"}}, "0002", "0001"},
      {"two replacements for one value", {{"KX71", "GG01"}, {"KX71", "GG02"}}, "KX71", "GG01"},
      {"bytes above 7F",
       {{"K\xC3\xA4K", "G\xC3\xA4H"}},
       "\xA4K\xC3\xA4K\xC3",
       "\xA4G\xC3\xA4H\xC3"},
      {"no text", serial, "", ""},
      {"no values", {}, "KQ0K401", "KQ0K401"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.replaced, replacedText(c.values, c.text)) << c.what;
}

TEST(KnownValues, TextsThatTellNothingAreLeftAlone) {
  // clang-format off
  const char* const values[] = {
      "", "0", "1", "123", "0000", "FFFFFFFF", "xxxxx", "None", "NONE", "EMPTY", "Unknown", "INVALID",
      "Undefined", "Not Specified", "Not Available", "Not Applicable", "NOT PRESENT", "not set",
      "Default", "Default string", "To be filled by O.E.M.", "To Be Filled By O.E.M.",
      "Serial Number", "System Serial Number", "Base Board Serial Number", "Chassis Serial Number",
      "Asset Tag", "No Asset Tag", "NO ASSET INFORMATION"};
  // clang-format on
  for (const char* const value : values) {
    const std::string text = std::string("<") + value + ">";
    EXPECT_EQ(text, replacedText({{value, std::string(std::string(value).size(), '#')}}, text));
  }
  EXPECT_EQ("<####>", replacedText({{"1234", "####"}}, "<1234>"));
}

TEST(KnownValues, OfALongOneTheBeginningGoes) {
  const std::string rest(44, 'K');
  const std::string value = "AB" + std::string(254, 'K') + rest;
  const std::string replacement = "CD" + std::string(298, 'G');
  EXPECT_EQ("CD" + std::string(254, 'G') + rest, replacedText({{value, replacement}}, value));
}

// The UUID 4C4C4544-0031-1035-8033-B7C04F4A3233 as bytes in the order of its text, and with the
// lower bytes first in its first three fields.
TEST(KnownValues, BytesAndOtherNotationsOfNumbers) {
  const Pairs uuid{{"4C4C4544003110358033B7C04F4A3233", "0A0A0000000000000000A0A00A0A0001"}};
  const Pairs dashed{
      {"4c4c4544-0031-1035-8033-b7c04f4a3233", "0a0a0000-0000-0000-0000-a0a00a0a0001"}};
  const Pairs serial{{"401A2B3C", "000A0A0B"}};
  const struct {
    const char* what;
    Pairs values;
    const char* bytes;
    const char* replaced;
  } cases[] = {
      {"UUID", uuid, "11 4C 4C 45 44 00 31 10 35 80 33 B7 C0 4F 4A 32 33 22",
       "11 0A 0A 00 00 00 00 00 00 00 00 A0 A0 0A 0A 00 01 22"},
      {"UUID, other order", uuid, "44 45 4C 4C 31 00 35 10 80 33 B7 C0 4F 4A 32 33",
       "00 00 0A 0A 00 00 00 00 00 00 A0 A0 0A 0A 00 01"},
      {"UUID written with dashes", dashed, "4C 4C 45 44 00 31 10 35 80 33 B7 C0 4F 4A 32 33",
       "0A 0A 00 00 00 00 00 00 00 00 A0 A0 0A 0A 00 01"},
      {"UUID, one byte off", uuid, "4C 4C 45 44 00 31 10 35 80 33 B7 C0 4F 4A 32 34",
       "4C 4C 45 44 00 31 10 35 80 33 B7 C0 4F 4A 32 34"},
      {"number", serial, "40 40 1A 2B 3C 40", "40 00 0A 0A 0B 40"},
      {"number, other order", serial, "3C 2B 1A 40", "3C 2B 1A 40"},
      {"number of few bytes", {{"00001234", "00000001"}}, "00 00 12 34", "00 00 12 34"},
      {"number of characters", {{"31323334", "00000001"}}, "31 32 33 34", "31 32 33 34"},
      {"number with one byte above characters",
       {{"41424380", "0000000A"}},
       "41 42 43 80",
       "00 00 00 0A"},
      {"number with one usual byte", {{"401AFF2B", "000A0A0B"}}, "40 1A FF 2B", "00 0A 0A 0B"},
      {"number with two usual bytes", {{"40FF1A00", "000A0A0B"}}, "40 FF 1A 00", "40 FF 1A 00"},
      {"number as long as a UUID's text",
       {{"4C4C454400311035803300B7C04F4A323311", "0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0A0B"}},
       "4C 4C 45 44 00 31 10 35 80 33 00 B7 C0 4F 4A 32 33 11",
       "0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0A 0B"},
      {"number of three bytes", {{"401A2B", "000A0B"}}, "40 1A 2B", "40 1A 2B"},
      {"odd number of digits", {{"401A2B3C5", "000A0A0B1"}}, "40 1A 2B 3C", "40 1A 2B 3C"},
      {"no number", {{"401A2B3K", "000A0A0G"}}, "40 1A 2B 3C", "40 1A 2B 3C"},
      {"text in UTF-16", {{"KX71", "GG01"}}, "4B 00 58 00 37 00 31 00", "47 00 47 00 30 00 31 00"},
      {"text in UTF-16, lower case",
       {{"KX71", "GG01"}},
       "6B 00 78 00 37 00 31 00",
       "67 00 67 00 30 00 31 00"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.replaced, hexPairs(replaced(c.values, bytesOfHex(c.bytes)))) << c.what;
  }
}

TEST(KnownValues, TextsOfAUuid) {
  const Pairs uuid{{"4C4C4544003110358033B7C04F4A3233", "0A0A0000000000000000A0A00A0A0001"}};
  const struct {
    const char* text;
    const char* replaced;
  } cases[] = {
      {"4C4C4544003110358033B7C04F4A3233", "0A0A0000000000000000A0A00A0A0001"},
      {"4c4c4544003110358033b7c04f4a3233", "0a0a0000000000000000a0a00a0a0001"},
      {"4C4C4544-0031-1035-8033-B7C04F4A3233", "0A0A0000-0000-0000-0000-A0A00A0A0001"},
      {"{44454c4c-3100-3510-8033-b7c04f4a3233}", "{00000a0a-0000-0000-0000-a0a00a0a0001}"},
      {"44454C4C310035108033B7C04F4A3233",
       "00000A0A000000000000"
       "A0A00A0A0001"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.replaced, replacedText(uuid, c.text)) << c.text;
}

}  // namespace
}  // namespace velhost
