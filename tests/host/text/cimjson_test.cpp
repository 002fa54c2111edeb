// SPDX-License-Identifier: Apache-2.0
#include "host/text/cimjson.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace velhost {
namespace {

using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;

TEST(CimJson, PlainValuesAreInTheOrderOfTheProperties) {
  EXPECT_EQ(
      "{\"Z\":\"a\xEF\xBF\xBD\",\"A\":true,\"U8\":255,\"U16\":65535,\"U64\":18446744073709551615,"
      "\"D\":\"20070315000000.000000+000\",\"E\":null}",
      plainValues({{"Z", TCIMValue("a\xFF")},
                   {"A", TCIMValue(true)},
                   {"U8", TCIMValue(std::uint8_t{255})},
                   {"U16", TCIMValue(std::uint16_t{65535})},
                   {"U64", TCIMValue(std::uint64_t{18446744073709551615U})},
                   {"D", TCIMValue(TCIMDateTime("20070315000000.000000+000"))},
                   {"E", TCIMValue()}})
          .dump());
  EXPECT_EQ("{}", plainValues({}).dump());
}

TEST(CimJson, NoTextIsNull) {
  EXPECT_EQ("null", textOrNull("").dump());
  EXPECT_EQ("\" \"", textOrNull(" ").dump());
  EXPECT_EQ("\"\xEF\xBF\xBD\"", textOrNull("\xFF").dump());
}

TEST(CimJson, ADocumentIsIndentedAndALineIsNot) {
  const nlohmann::ordered_json json{{"b", "\n\xE2\x80\xA8"}, {"a", {1, 2}}};
  EXPECT_EQ("{\n  \"b\": \"\\n\\u2028\",\n  \"a\": [\n    1,\n    2\n  ]\n}\n", documentText(json));
  EXPECT_EQ("{\"b\":\"\\n\\u2028\",\"a\":[1,2]}\n", lineText(json));
}

}  // namespace
}  // namespace velhost
