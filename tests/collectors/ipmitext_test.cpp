// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/ipmitext.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"

namespace ipmiinventory {
namespace {

struct TextCase {
  const char* what;
  std::string (*read)(ByteSpan);
  const char* bytes;
  const char* text;
};

TEST(IpmiText, IsReadInEachEncoding) {
  const TextCase kCases[] = {
      {"nothing", hexDigits, "", ""},
      {"digits", hexDigits, "0A 00 FF", "0A00FF"},
      {"only zeros", hexDigits, "00 00", ""},
      {"zeros as they are", hexBytes, "00 00", "0000"},
      {"nothing", bcdPlusText, "", ""},
      {"the higher four bits first", bcdPlusText, "12 90", "1290"},
      {"other characters", bcdPlusText, "1A 2B 3C 4D 5E 6F 77", "1 2-3.4:5,6_77"},
      {"blanks around it", bcdPlusText, "A1 2A", "12"},
      {"nothing", sixBitText, "", ""},
      // The definition's own example, "IPMI".
      {"four in three bytes", sixBitText, "29 DC A6", "IPMI"},
      {"bits left over", sixBitText, "29 DC", "IP"},
      {"the highest and the lowest", sixBitText, "3F F0 03", "_ _"},
      {"nothing", latin1Text, "", ""},
      {"ASCII", latin1Text, "41 62 7E", "Ab~"},
      {"two bytes in UTF-8", latin1Text, "4D FC 6C A0 FF", "M\xC3\xBCl\xC2\xA0\xC3\xBF"},
      {"ends at a zero", latin1Text, "41 00 42", "A"},
      {"begins with a zero", latin1Text, "00 42", ""},
      {"blanks around it, not in it", latin1Text, "20 20 41 20 42 20", "A B"},
      {"control characters", latin1Text, "09 41 0A 42 7F 43 80 9F 44 0D", "A B C  D"},
      {"nothing", unicodeText, "", ""},
      {"one, two and three bytes in UTF-8", unicodeText, "41 00 FC 00 AC 20",
       "A\xC3\xBC\xE2\x82\xAC"},
      {"last of two, first of three", unicodeText, "FF 07 00 08", "\xDF\xBF\xE0\xA0\x80"},
      {"last of three, first of four", unicodeText, "FF FF 00 D8 00 DC",
       "\xEF\xBF\xBF\xF0\x90\x80\x80"},
      {"a pair", unicodeText, "3D D8 00 DE", "\xF0\x9F\x98\x80"},
      {"the last pair", unicodeText, "FF DB FF DF", "\xF4\x8F\xBF\xBF"},
      {"a first half alone", unicodeText, "3D D8 41 00",
       "\xEF\xBF\xBD"
       "A"},
      {"a first half before the character behind the second halves", unicodeText, "3D D8 00 E0",
       "\xEF\xBF\xBD\xEE\x80\x80"},
      {"two first halves", unicodeText, "3D D8 FF DB", "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"a second half behind the character before the first halves", unicodeText, "FF D7 00 DC",
       "\xED\x9F\xBF\xEF\xBF\xBD"},
      {"a first half at the end", unicodeText, "41 00 3D D8", "A\xEF\xBF\xBD"},
      {"a second half alone", unicodeText, "00 DE 41 00",
       "\xEF\xBF\xBD"
       "A"},
      {"an odd byte", unicodeText, "41 00 42", "A\xEF\xBF\xBD"},
      {"one byte", unicodeText, "42", "\xEF\xBF\xBD"},
      {"ends at a zero", unicodeText, "41 00 00 00 42 00", "A"},
  };
  for (const TextCase& c : kCases) EXPECT_EQ(c.text, c.read(hex(c.bytes))) << c.what;
}

}  // namespace
}  // namespace ipmiinventory
