// SPDX-License-Identifier: Apache-2.0
#include "host/machine/jsondocument.h"

#include <gmock/gmock.h>
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

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(JsonDocument, WhatGoesBeyondTheBudgetIsRefusedWhereItBegins) {
  const std::string levels = repeated("[", 32);
  const std::string values = repeated("0,", 249'998) + "0";
  const struct {
    const char* what;
    std::string text;
    std::string complaint;
  } cases[] = {
      {"32 levels", levels + repeated("]", 32), "no complaint"},
      {"33 levels", levels + "[", " " + repeated("/0", 32) + ": lies deeper than 32 levels"},
      {"33 levels of objects", repeated(R"({"a":)", 33),
       " " + repeated("/a", 32) + ": lies deeper than 32 levels"},
      {"250000 values, the list one of them", "[" + values + "]", "no complaint"},
      {"250001 values", "[" + values + ",0]", " /249999: the file has more than 250000 values"},
      {"250001 values, the last a member", R"({"a": [)" + values.substr(2) + R"(], "b": 1})",
       " /b: the file has more than 250000 values"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.complaint, complaintAbout(c.text)) << c.what;
}

// Each key compared with each other would be thirty thousand million comparisons.
TEST(JsonDocument, ManyKeysAreNotEachComparedWithAll) {
  std::string text = "{";
  for (int i = 0; i < 249'999; ++i) text += "\"key " + std::to_string(i) + "\": 1,";
  text += "\"key 0\": 1}";
  EXPECT_EQ(" /key 0: this key is given twice", complaintAbout(text));
}

TEST(JsonDocument, AComplaintShowsKeysInPartAndNothingUnseen) {
  const struct {
    const char* what;
    std::string key;
    std::string shown;
  } cases[] = {
      {"60 characters", std::string(60, 'k'), std::string(60, 'k')},
      {"61 characters", std::string(61, 'k'), std::string(29, 'k') + "..." + std::string(28, 'k')},
      {"five million characters", std::string(5'000'000, 'k'),
       std::string(29, 'k') + "..." + std::string(28, 'k')},
      {"a zero byte", "a\\u0000b", "a\\x00b"},
      {"a direction override",
       "a\xE2\x80\xAE"
       "b",
       "a\\u202Eb"},
  };
  for (const auto& c : cases) {
    const Json document = parseDocument("{\"" + c.key + "\": 1}");
    const auto readMember = [](const std::string&, const Cursor& value) { value.fail("is wrong"); };
    EXPECT_THAT([&] { Cursor(document).eachMember(readMember); },
                testing::ThrowsMessage<DocumentError>(" /" + c.shown + ": is wrong"))
        << c.what;
  }
}

TEST(JsonDocument, AListHasNoMoreEntriesThanItMay) {
  const Json document = parseDocument(R"({"a": [1, 2, 3]})");
  int sum = 0;
  const auto readMost = [&](std::size_t most) {
    Cursor(document).eachMember([&](const std::string&, const Cursor& list) {
      list.eachElement([&](const Cursor& element) { sum += element.integer<int>(); }, most);
    });
  };
  EXPECT_THAT([&] { readMost(2); },
              testing::ThrowsMessage<DocumentError>(" /a: has more than 2 entries"));
  EXPECT_EQ(0, sum) << "nothing is read of it";
  readMost(3);
  EXPECT_EQ(6, sum);
}

TEST(JsonDocument, TheParsersWordsAreShortened) {
  const std::string complaint = complaintAbout("\"" + std::string(5'000'000, 'k'));
  EXPECT_EQ(0U, complaint.find("1:5000002: syntax error while parsing value")) << complaint;
  EXPECT_GT(300U, complaint.size());
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
