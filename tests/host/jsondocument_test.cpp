// SPDX-License-Identifier: Apache-2.0
#include "host/jsondocument.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

std::string complaintAbout(const std::string& text) {
  try {
    parseDocument(text);
  } catch (const DocumentError& error) {
    return error.what();
  }
  return "no complaint";
}

TEST(JsonDocument, CommentsAreAllowedAndOrderIsKept) {
  const Json document = parseDocument(
      "// one machine\n{ \"b\": [1, -2, 2.5, true, null, \"x\"], /* then */ \"a\": {\"c\": {}} }");
  EXPECT_EQ("{\"b\":[1,-2,2.5,true,null,\"x\"],\"a\":{\"c\":{}}}", document.dump());
}

TEST(JsonDocument, BrokenTextsAreNamedByLineAndColumn) {
  const struct {
    const char* what;
    const char* text;
    const char* place;
  } cases[] = {
      {"empty", "", "1:1: "},
      {"cut off", "{\n  \"a\": 1", "2:9: "},
      {"a comma too many", "{\n\"a\": 1,\n}", "3:1: "},
      {"no value", "[\n1,\n\n   ?]", "4:4: "},
      {"text behind the document", "{} x", "1:4: "},
      {"a comment that does not end", "{} /* x", "1:8: "},
      {"not UTF-8", "{\"a\": \"\xFF\"}", "1:8: "},
      {"a number that no double holds", "[1,\n1e999]", "2:5: "},
      {"single quotes", "{'a': 1}", "1:2: "},
  };
  for (const auto& c : cases) {
    const std::string complaint = complaintAbout(c.text);
    EXPECT_EQ(0U, complaint.find(c.place)) << c.what << ": " << complaint;
    EXPECT_EQ(std::string::npos, complaint.find("json.exception")) << c.what << ": " << complaint;
  }
}

TEST(JsonDocument, AKeyGivenTwiceIsNamedByItsPointer) {
  const struct {
    const char* text;
    const char* complaint;
  } cases[] = {
      {R"({"a": 1, "a": 1})", " /a: this key is given twice"},
      {R"({"a": [{}, {"b": 1, "c": [], "b": 2}]})", " /a/1/b: this key is given twice"},
      {R"({"a/b": {"~": 1, "~": 2}})", " /a~1b/~0: this key is given twice"},
      {R"({"a": 1, "b": {"a": 1}})", "no complaint"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.complaint, complaintAbout(c.text)) << c.text;
}

template <class Number>
std::string integerOf(const char* text, Number lowest, Number highest) {
  const Json document = parseDocument(text);
  try {
    return std::to_string(Cursor(document).integer(lowest, highest));
  } catch (const DocumentError& error) {
    return error.what();
  }
}

TEST(JsonDocument, IntegersAreHeldToTheirRange) {
  const auto byte = [](const char* text) { return integerOf<std::uint8_t>(text, 0, 255); };
  EXPECT_EQ("0", byte("0"));
  EXPECT_EQ("255", byte("255"));
  EXPECT_EQ("2", byte("2.0"));
  EXPECT_EQ(" /: must be from 0 to 255", byte("256"));
  EXPECT_EQ(" /: must be from 0 to 255", byte("-1"));
  EXPECT_EQ(" /: must be from 0 to 255", byte("18446744073709551615"));
  EXPECT_EQ(" /: must be an integer", byte("1.5"));
  EXPECT_EQ(" /: must be an integer", byte("1e300"));
  EXPECT_EQ(" /: must be an integer", byte("\"1\""));
  EXPECT_EQ(" /: must be an integer", byte("true"));
  EXPECT_EQ("18446744073709551615", integerOf<std::uint64_t>("18446744073709551615", 0, ~0ULL));
  EXPECT_EQ("-2147483648", integerOf<std::int32_t>("-2147483648", INT32_MIN, INT32_MAX));
}

}  // namespace
}  // namespace velhost
