// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frufields.h"

#include <gtest/gtest.h>

#include "ipmibytes.h"

namespace ipmiinventory {
namespace {

// "ENCODING: BYTES", a field a line.
std::vector<std::string> described(const FruFields& cut) {
  std::vector<std::string> lines;
  for (const FruField& field : cut.fields) {
    lines.push_back(std::to_string(field.encoding) + ": " + hexText(field.bytes));
  }
  return lines;
}

TEST(FruFields, AreCutUpToTheEndMark) {
  const struct {
    const char* what;
    const char* bytes;
    std::vector<std::string> fields;
    FieldsEnd end;
  } kCases[] = {
      {"nothing", "", {}, FieldsEnd::kMissing},
      {"only the mark", "C1", {}, FieldsEnd::kMark},
      {"one of each encoding",
       "01 AA 42 12 34 83 29 DC A6 C2 41 42 C1",
       {"0: AA", "1: 12 34", "2: 29 DC A6", "3: 41 42"},
       FieldsEnd::kMark},
      {"empty ones", "00 C0 80 C1", {"0: ", "3: ", "2: "}, FieldsEnd::kMark},
      {"what is behind the mark", "C2 41 42 C1 C2 43", {"3: 41 42"}, FieldsEnd::kMark},
      {"no mark", "C2 41 42", {"3: 41 42"}, FieldsEnd::kMissing},
      {"a byte short", "01 AA C3 41 42", {"0: AA"}, FieldsEnd::kCut},
      {"the longest, of nothing", "FF", {}, FieldsEnd::kCut},
      {"one byte by language is the mark, of other encodings a field",
       "01 41 41 42 81 43 C1",
       {"0: 41", "1: 42", "2: 43"},
       FieldsEnd::kMark},
  };
  for (const auto& c : kCases) {
    const Bytes bytes = hex(c.bytes);
    const FruFields cut = cutFields(bytes);
    EXPECT_EQ(c.fields, described(cut)) << c.what;
    EXPECT_EQ(c.end, cut.end) << c.what;
  }
}

TEST(FruFields, AreTextsInTheirEncoding) {
  const struct {
    std::uint8_t encoding;
    bool isEnglish;
    const char* text;
  } kCases[] = {
      {0, true, "4100"}, {1, true, "4100"}, {2, true, "!!"},
      {3, true, "A"},    {3, false, "A"},   {0, false, "4100"},
  };
  const Bytes bytes = hex("41 00");
  for (const auto& c : kCases) {
    EXPECT_EQ(c.text, fieldText({c.encoding, bytes}, c.isEnglish)) << int{c.encoding};
  }
  const Bytes two = hex("41 42");
  EXPECT_EQ("AB", fieldText({3, two}, true));
  EXPECT_EQ("\xE4\x89\x81", fieldText({3, two}, false));  // U+4241
}

}  // namespace
}  // namespace ipmiinventory
