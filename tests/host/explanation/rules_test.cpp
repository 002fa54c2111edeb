// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/rules.h"

#include <gtest/gtest.h>

#include "host/text/hextext.h"

namespace velhost {
namespace {

Bytes text(std::string_view characters) { return {characters.begin(), characters.end()}; }

std::string applied(std::string_view rule, const Bytes& bytes) {
  return appliedRule(rule, bytes).value_or("(left to the collector)");
}

TEST(Rules, MakeTextsOfTexts) {
  using namespace std::literals;
  const struct {
    const char* rule;
    std::string_view bytes;
    const char* value;
  } cases[] = {
      {"text", "KP-1\0X"sv, "KP-1"},
      {"text", "", ""},
      {"text or blank", "\0\0"sv, " "},
      {"text or blank", "KRX", "KRX"},
      {"level", "1.3 [A](b)-\0x"sv, "1.3[A](b)x"},
      {"letters and digits", "YUOO-73C 2.1\0Z"sv, "YUOO73C21"},
      {"version part", "1.08 [ABC123]", "108"},
      {"version part", "ABC123A120", "120"},
      {"build part", "1.08 [ABC123]", "ABC123"},
      {"numeric version part", "2.10.1", "2101"},
      {"numeric version part", "1a", " "},
      {"trimmed", " KRX  ", " KRX"},
      {"before -", "KRX Adapter - 2", "KRX Adapter "},
      {"before -", "KRX Adapter", ""},
      {"between PROD_ and &", "VEN_X&PROD_LTO&REV_1", "LTO"},
      {"between PROD_ and &", "PROD_LTO", ""},
      {"JEP106 text", "Samsung  ", "Samsung"},
      {"JEP106 text", "80CE", "(left to the collector)"},
      {"JEP106 maker", "\xCE", "(left to the collector)"},
      {"a rule of somebody else's", "x", "(left to the collector)"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value, applied(c.rule, text(c.bytes))) << c.rule;
}

TEST(Rules, MakeTextsOfNumbers) {
  const struct {
    const char* rule;
    const char* bytes;
    const char* value;
  } cases[] = {
      {"decimal", "FE", "254"},
      {"decimal", "", "0"},
      {"hex bytes", "00 1A", "001A"},
      {"hex digits", "40 1A 2B 3C", "401A2B3C"},
      {"hex digits", "00 00", ""},
      {"shift 16", "00 E0", "3758096384"},
      {"low nibble", "81", "1"},
      {"16-bit number", "34 12", "4660"},
      {"16-bit number", "FF FF", ""},
      {"16-bit number", "34", ""},
      {"20-bit number", "57 01 F0", "343"},
      {"20-bit number", "FF FF FF", ""},
      {"BCD version", "82 13", "2.13"},
      {"IPMI version", "02", "2.0"},
      {"GUID", "C3 B2 A1 00 00 5C 10 8A 52 4F 4E 9B 31 7D 0A 6C",
       "6c0a7d31-9b4e-4f52-8a10-5c0000a1b2c3"},
      {"GUID", "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF", ""},
      {"UUID", "33 22 11 00 55 44 77 66 88 99 AA BB CC DD EE FF",
       "00112233-4455-6677-8899-aabbccddeeff"},
      {"major.minor", "02 0A", "2.10"},
      {"major.minor", "02 FF", ""},
      {"number", "C0 12", "4800"},
      {"number", "01 00 00 80", "1"},
      {"not zero", "00 00", "FALSE"},
      {"not zero", "00 80", "TRUE"},
      {"bit 3", "08", "TRUE"},
      {"bit 3", "F7", "FALSE"},
      {"ROM size", "FF", "16777216"},
      {"extended ROM size", "20 00", "33554432"},
      {"extended ROM size", "01 40", "1073741824"},
      {"extended ROM size", "01 80", ""},
      {"memory size", "00 80", "0"},
      {"memory size", "01 80", "1024"},
      {"memory size", "00 40", "17179869184"},
      {"memory size", "FF FF", ""},
      {"extended memory size", "00 80 00 80", "34359738368"},
      {"minutes since 1996", "00 00 00", ""},
      {"minutes since 1996", "A1 05 00", "19960102000100.000000+000"},
      {"typed text", "C3 4B 52 58", "KRX"},
      {"typed text", "C4 20 E9 07 00", "\xC3\xA9"},
      {"typed text", "42 12 3B", "123-"},
      {"typed text", "83 29 DC A6", "IPMI"},
      {"typed text", "C0", ""},
      {"typed text", "02 01 02", "(left to the collector)"},
      {"chassis type", "17", "(left to the collector)"},
      {"chassis type", "17 17", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value, applied(c.rule, bytesOfHex(c.bytes))) << c.rule;
}

TEST(Rules, MakeDates) {
  const struct {
    const char* rule;
    const char* text;
    const char* value;
  } cases[] = {
      {"date", "03/15/07", "20070315000000.000000+000"},
      {"date", "03/15/51", "19510315000000.000000+000"},
      {"date", "02/29/2023", "00000000000000.000000+000"},
      {"date", "07-04-1999", "19990704000000.000000+000"},
      {"date", "1999-07-04", "19990704000000.000000+000"},
      {"date", "today", "00000000000000.000000+000"},
      {"date", "3/15/2007 ", "(left to the collector)"},
      {"month/day/year", "03/15/2007  ", "20070315000000.000000+000"},
      {"month/day/year", "03/15/50", "20500315000000.000000+000"},
      {"month/day/year", "07-04-1999", ""},
      {"month/day/year", "13/15/2007", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value, applied(c.rule, text(c.text))) << c.text;
}

TEST(Rules, HaveWords) {
  EXPECT_EQ("the text up to the first zero byte; a blank for nothing",
            ruleInWords("text or blank"));
  EXPECT_EQ("what stands before the first \"-\"", ruleInWords("before -"));
  EXPECT_EQ("what stands between the first \"A_\" and the first \"&\" behind it",
            ruleInWords("between A_ and &"));
  EXPECT_EQ("a rule of somebody else's", ruleInWords("a rule of somebody else's"));
}

}  // namespace
}  // namespace velhost
