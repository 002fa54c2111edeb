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
  const struct {
    const char* rule;
    const char* words;
  } cases[] = {
      {"text", "the text up to the first zero byte"},
      {"text or blank", "the text up to the first zero byte; a blank for nothing"},
      {"decimal", "the byte as a decimal number"},
      {"hex bytes", "two hexadecimal digits a byte"},
      {"hex digits", "two hexadecimal digits a byte; nothing where all are zero"},
      {"date", "a date: MM/DD/YY, MM/DD/YYYY, MM-DD-YYYY or YYYY-MM-DD"},
      {"level", "letters, digits and .()[] only"},
      {"letters and digits", "letters and digits only"},
      {"version part",
       "letters and digits only; of these the digits in front, otherwise those at the end"},
      {"build part",
       "letters and digits only; of these what is left without the digits in front, otherwise "
       "without those at the end"},
      {"numeric version part",
       "letters and digits only, digits first: of these the digits in front, otherwise those at "
       "the end; a blank where a letter is among them"},
      {"shift 16", "the number, 16 bits higher"},
      {"low nibble", "the number of the lower four bits"},
      {"16-bit number", "a number of 16 bits, the lowest byte first"},
      {"20-bit number", "a number of 20 bits, the lowest byte first"},
      {"BCD version",
       "seven bits of the first byte in decimal, a point, the two digits of the second"},
      {"IPMI version", "the lower digit, a point, the higher digit"},
      {"GUID", "hexadecimal digits from the last byte to the first, in groups"},
      {"minutes since 1996", "minutes since 1996, the lowest byte first"},
      {"typed text",
       "a text behind a byte that gives its encoding and length, without blanks around it"},
      {"JEP106 maker", "the maker with that JEDEC JEP106 code"},
      {"trimmed", "the text without the blanks at its end"},
      {"month/day/year", "a date: MM/DD/YY or MM/DD/YYYY"},
      {"major.minor", "the two bytes in decimal with a point between them"},
      {"number", "the number without bit 31, the lowest byte first"},
      {"not zero", "whether the number is not 0"},
      {"bit 3", "whether bit 3 is set"},
      {"UUID", "hexadecimal digits in groups, the first three with their lowest byte first"},
      {"ROM size", "so many blocks of 64 KB and one more, in bytes"},
      {"extended ROM size", "so many MB or GB, as bits 14 and 15 say, in bytes"},
      {"memory size", "so many MB, or KB where bit 15 is set, in bytes"},
      {"extended memory size", "so many MB, in bytes"},
      {"chassis type", "the standard's name of that chassis type (DSP0134, 7.4.1)"},
      {"form factor", "the standard's name of that form factor (DSP0134, 7.18.1)"},
      {"memory type", "the standard's name of that memory type (DSP0134, 7.18.2)"},
      {"JEP106 text", "the maker with the JEDEC JEP106 code that the text is, otherwise the text"},
      {"JEP106 module maker", "the maker by the two bytes of the module's JEDEC JEP106 code"},
      {"before -", "what stands before the first \"-\""},
      {"between A_ and &", "what stands between the first \"A_\" and the first \"&\" behind it"},
      {"a rule of somebody else's", "a rule of somebody else's"},
      {"somebody else's or blank", "somebody else's; a blank for nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.words, ruleInWords(c.rule)) << c.rule;
}

}  // namespace
}  // namespace velhost
