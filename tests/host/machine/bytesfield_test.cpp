// SPDX-License-Identifier: Apache-2.0
#include "host/machine/bytesfield.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(BytesField, PiecesAreLaidEndToEnd) {
  const struct {
    const char* what;
    const char* json;
    Bytes bytes;
  } cases[] = {
      {"no bytes", R"("")", {}},
      {"hex pairs", R"("04 03 050b")", {4, 3, 5, 0x0B}},
      {"no pieces", "[]", {}},
      {"hex pieces", R"(["04 03", "", "05"])", {4, 3, 5}},
      {"a text as long as it is", R"([{"text": "P1"}])", {'P', '1'}},
      {"a text padded with zeros", R"([{"text": "P1", "size": 4}])", {'P', '1', 0, 0}},
      {"a text of just its size", R"([{"text": "P1", "size": 2}])", {'P', '1'}},
      {"UTF-8 bytes are counted", R"([{"text": "\u00fc", "size": 2}])", {0xC3, 0xBC}},
      {"a zero byte in a text", R"([{"text": "a\u0000b"}])", {'a', 0, 'b'}},
      {"an empty text is only its padding", R"([{"text": "", "size": 2}])", {0, 0}},
      {"zeros", R"(["FF", {"zeros": 3}, {"zeros": 0}, "FF"])", {0xFF, 0, 0, 0, 0xFF}},
  };
  for (const auto& c : cases) {
    const Json document = parseDocument(c.json);
    EXPECT_EQ(c.bytes, readBytes(Cursor(document))) << c.what;
  }
}

TEST(BytesField, WhatIsWrongIsNamedWithItsPiece) {
  const struct {
    const char* json;
    const char* complaint;
  } cases[] = {
      {R"("0")", " /: the last hex pair has only one digit"},
      {R"(["00", "0 0"])", " /1: blank inside a hex pair at character 2"},
      {"4", " /: must be hex pairs or a list of pieces"},
      {R"({"zeros": 1})", " /: must be hex pairs or a list of pieces"},
      {"[4]", " /0: must be hex pairs, a text with its size, or zeros"},
      {"[[]]", " /0: must be hex pairs, a text with its size, or zeros"},
      {"[{}]", " /0: must have either \"text\" or \"zeros\""},
      {R"([{"text": "a", "zeros": 1}])", " /0: must have either \"text\" or \"zeros\""},
      {R"([{"zeros": 1, "size": 1}])", " /0/size: goes with \"text\" only"},
      {R"([{"size": 1}])", " /0: must have either \"text\" or \"zeros\""},
      {R"([{"text": "abc", "size": 2}])", " /0/text: has 3 bytes, more than its size of 2"},
      {R"([{"text": 1}])", " /0/text: must be a text"},
      {R"([{"zeros": -1}])", " /0/zeros: must be from 0 to 1048576"},
      {R"([{"zeros": 1048577}])", " /0/zeros: must be from 0 to 1048576"},
      {R"([{"text": "a", "length": 2}])", " /0/length: unknown key"},
  };
  for (const auto& c : cases) {
    const Json document = parseDocument(c.json);
    try {
      readBytes(Cursor(document));
      ADD_FAILURE() << "accepted: " << c.json;
    } catch (const DocumentError& error) {
      EXPECT_STREQ(c.complaint, error.what()) << c.json;
    }
  }
}

std::string complaintAboutBytes(const std::string& json) {
  const Json document = parseDocument(json);
  const Cursor root(document);
  try {
    root.eachElement([](const Cursor& field) { readBytes(field); });
  } catch (const DocumentError& error) {
    return error.what();
  }
  return "no complaint";
}

TEST(BytesField, AllFieldsOfADocumentShareOneBudget) {
  std::string fields;  // 63 MiB
  for (int i = 0; i < 63; ++i) fields += R"([{"zeros": 1048576}], )";
  const std::string most = "[" + fields;
  const std::string complaint = ": with it the file has more than 67108864 bytes";
  const struct {
    const char* what;
    std::string json;
    std::string complaint;
  } cases[] = {
      {"64 MiB", most + R"([{"zeros": 1048576}]])", "no complaint"},
      {"one zero more", most + R"([{"zeros": 1048576}, {"zeros": 1}]])", " /63/1" + complaint},
      {"one byte of a text more", most + R"([{"zeros": 1048576}, {"text": "a"}]])",
       " /63/1" + complaint},
      {"a text's padding counts", most + R"([{"zeros": 1}, {"text": "", "size": 1048576}]])",
       " /63/1" + complaint},
      {"a hex piece counts", most + R"([{"zeros": 1048576}, "00"]])", " /63/1" + complaint},
      {"hex pairs count", most + R"([{"zeros": 1048576}], "00"])", " /64" + complaint},
      {"no bytes count nothing", most + R"([{"zeros": 1048576}, {"zeros": 0}], ""])",
       "no complaint"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.complaint, complaintAboutBytes(c.json)) << c.what;
}

}  // namespace
}  // namespace velhost
