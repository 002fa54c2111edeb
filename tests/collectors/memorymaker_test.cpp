// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/memorymaker.h"

#include <gtest/gtest.h>

namespace smbiosinventory {
namespace {

TEST(MemoryMaker, OfAModulesTwoBytes) {
  const struct {
    const char* what;
    std::uint16_t id;
    const char* maker;
  } kCases[] = {
      {"80h CEh: no continuation code", 0xCE80, "Samsung"},
      {"the same without parity bits", 0x4E00, "Samsung"},
      {"01h 98h: one", 0x9801, "Kingston"},
      {"85h 9Bh: five", 0x9B85, "Crucial Technology"},
      {"the first code of all", 0x0180, "AMD"},
      {"not told", 0x0000, ""},
      {"code 0", 0x8080, ""},
      {"code 7Fh, which is no code", 0xFF80, ""},
      {"the last bank, code 7Eh names nobody", 0xFE86, ""},
      {"a bank behind the last", 0x0107, ""},
      {"all ones", 0xFFFF, ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.maker, makerOfModuleId(c.id)) << c.what;
}

TEST(MemoryMaker, OfDigits) {
  const struct {
    const char* what;
    const char* text;
    const char* maker;
  } kCases[] = {
      {"two bytes", "80CE", "Samsung"},
      {"in lower case", "80ad", "Hyundai Electronics"},
      {"without parity bits", "002C", "Micron Technology"},
      {"a number, its low byte last", "0xCE80", "Samsung"},
      {"the same with a large X", "0X9801", "Kingston"},
      {"a number in the order of the bytes", "0x80CE", "Samsung"},
      {"a number without its prefix", "CE80", "Samsung"},
      {"both orders give makers: bytes in order", "0102", "National Instruments"},
      {"and the prefix tells the number", "0x0102", "Camintonn Corporation"},
      {"module and memory", "80CE000080CE", "Samsung"},
      {"the same without parity bits", "00AD063200AD", "Hyundai Electronics"},
      {"eight bytes of an older module", "CE00000000000000", "Samsung"},
      {"one continuation code", "7F98000000000000", "Kingston"},
      {"two", "7F7F9E0000000000", "Corsair"},
      {"four digits of them", "2C00", "Micron Technology"},
      {"the code alone is too short", "CE", ""},
      {"no digits", "", ""},
      {"a prefix alone", "0x", ""},
      {"an odd number of digits", "80CE0", ""},
      {"nine bytes", "CE0000000000000000", ""},
      {"words", "Samsung", ""},
      {"a word of the digits' letters", "FACE", ""},
      {"a digit that is none", "80CG", ""},
      {"a sign", "-8CE", ""},
      {"a prefix in the middle", "800x", ""},
      {"nobody's code", "89FF", ""},
      {"continuation codes alone", "7F7F7F7F7F7F7F7F", ""},
      {"zeros", "00000000", ""},
      {"something behind an older code", "CE000001", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.maker, makerOfIdText(c.text)) << c.what;
}

}  // namespace
}  // namespace smbiosinventory
