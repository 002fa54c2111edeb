// SPDX-License-Identifier: Apache-2.0
#include "host/recording/pseudonyms.h"

#include <gtest/gtest.h>

#include <set>

#include "host/text/hextext.h"

namespace velhost {
namespace {

TEST(Pseudonyms, KeepTheShapeOfAValue) {
  const struct {
    const char* value;
    const char* pseudonym;  // of the first value of its shape
  } cases[] = {
      {"1234567", "0000001"},     {"KQ0K401", "GG0G001"},
      {"ABCDEF", "AAAAAB"},       {"GHXYZ", "GGGGH"},
      {"abcdef", "aaaaab"},       {"ghxyz", "ggggh"},
      {"N200-7", "G000-1"},       {"7-N.A", "0-G.B"},
      {"--/ .", "--/ ."},         {"", ""},
      {"4\xC3\xA4", "1\xC3\xA4"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.pseudonym, Pseudonyms().of(c.value)) << c.value;
}

TEST(Pseudonyms, EqualValuesStayEqualAndOthersDiffer) {
  Pseudonyms pseudonyms;
  EXPECT_EQ("GG01", pseudonyms.of("KX71"));
  EXPECT_EQ("GG02", pseudonyms.of("KX72"));
  EXPECT_EQ("01", pseudonyms.of("72"));  // each shape has a count of its own
  EXPECT_EQ("GG01", pseudonyms.of("KX71"));
  EXPECT_EQ("GG03", pseudonyms.of("KY71"));
}

TEST(Pseudonyms, CarryOverFromTheRight) {
  Pseudonyms pseudonyms;
  for (int i = 0; i < 9; ++i) pseudonyms.of("K" + std::to_string(i));
  EXPECT_EQ("H0", pseudonyms.of("K9"));
  EXPECT_EQ("H1", pseudonyms.of("L0"));
}

TEST(Pseudonyms, UseUpAShapeBeforeTheyRepeat) {
  Pseudonyms pseudonyms;
  std::set<std::string> all;
  for (int i = 0; i < 100; ++i) all.insert(pseudonyms.of(std::to_string(100 + i).substr(1)));
  EXPECT_EQ(100U, all.size());
}

TEST(Pseudonyms, GetThemselves) {
  Pseudonyms first;
  Pseudonyms again;
  for (const char* const value : {"KQ0K401", "72", "KQ0K402", "KQ0K401", "aB-9"}) {
    const std::string pseudonym = first.of(value);
    EXPECT_EQ(pseudonym, again.of(pseudonym)) << value;
  }
}

TEST(Pseudonyms, InAFieldReplaceTextsAndLeaveWhatIsAroundThem) {
  using namespace std::string_literals;
  const struct {
    const char* what;
    std::string field;
    std::string replaced;
  } cases[] = {
      {"full", "KX71", "GG01"},
      {"zero bytes behind", "KX71\0\0"s, "GG01\0\0"s},
      {"blanks around", "  KX71 ", "  GG01 "},
      {"blank inside", "KX 71", "GG 01"},
      {"zero bytes before and between", "\0KX\0\0 71 \0"s, "\0GH\0\0 01 \0"s},
      {"zero bytes", "\0\0\0"s, "\0\0\0"s},
      {"blanks", "   ", "   "},
      {"blanks and zero bytes", " \0 "s, " \0 "s},
      {"empty", "", ""},
  };
  for (const auto& c : cases) {
    Bytes bytes(c.field.begin(), c.field.end());
    Pseudonyms().replaceText(bytes);
    EXPECT_EQ(c.replaced, std::string(bytes.begin(), bytes.end())) << c.what;
  }
}

TEST(Pseudonyms, InABinaryFieldReplaceItsDigits) {
  const struct {
    const char* what;
    const char* field;
    const char* replaced;
  } cases[] = {
      {"number", "40 1A 2B 3C", "00 0A 0A 0B"},
      {"zero byte in a number", "00 00 12 34", "00 00 00 01"},
      {"all zero", "00 00 00 00", "00 00 00 00"},
      {"all ones", "FF FF FF FF", "FF FF FF FF"},
      {"empty", "", ""},
  };
  for (const auto& c : cases) {
    Bytes bytes = bytesOfHex(c.field);
    Pseudonyms().replaceBytes(bytes);
    EXPECT_EQ(c.replaced, hexPairs(bytes)) << c.what;
  }
}

// A DIMM's serial number stands in binary in its SPD bytes and as text in SMBIOS type 17.
TEST(Pseudonyms, OfANumberAndOfItsTextAreEqual) {
  Pseudonyms pseudonyms;
  Bytes bytes = bytesOfHex("40 1A 2B 3C");
  pseudonyms.of("401A2B3D");
  pseudonyms.replaceBytes(bytes);
  EXPECT_EQ(hexOfBytes(bytes), pseudonyms.of("401A2B3C"));
}

}  // namespace
}  // namespace velhost
