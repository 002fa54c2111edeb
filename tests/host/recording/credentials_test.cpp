// SPDX-License-Identifier: Apache-2.0
#include "host/recording/credentials.h"

#include <gtest/gtest.h>

#include "host/machine/smbiosparts.h"

namespace velhost {
namespace {

const std::string kText = "io.systemd.credential:login=secret";
const std::string kBinary = "io.systemd.credential.binary:key=c2VjcmV0";

Bytes raw(const char* header, const std::string& text) {
  Bytes bytes = bytesOfHex(header);
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

Bytes oemStrings(std::vector<std::string> strings) {
  return wholeStructure({11, 0, {static_cast<unsigned char>(strings.size())}, std::move(strings)});
}

TEST(Credentials, ABlankTakesTheirPlace) {
  using namespace std::string_literals;
  const struct {
    const char* what;
    Bytes bytes;
    std::size_t count;
    Bytes left;
  } cases[] = {
      {"none", oemStrings({"KRX Diagnostics", "io.systemd.stub"}), 0,
       oemStrings({"KRX Diagnostics", "io.systemd.stub"})},
      {"text", oemStrings({kText}), 1, oemStrings({" "})},
      {"binary", oemStrings({kBinary}), 1, oemStrings({" "})},
      {"between others", oemStrings({"one", kText, "three"}), 1, oemStrings({"one", " ", "three"})},
      {"several, one behind the other", oemStrings({kText, kBinary, kText}), 3,
       oemStrings({" ", " ", " "})},
      {"not at the text's start", oemStrings({"x " + kText}), 1, oemStrings({" "})},
      {"the name alone", oemStrings({"io.systemd.credential"}), 1, oemStrings({" "})},
      {"twice in one text", oemStrings({kText + kText}), 1, oemStrings({" "})},
      {"of another type", wholeStructure({1, 0, {}, {kText}}), 1,
       wholeStructure({1, 0, {}, {" "}})},
      {"set without its end", raw("0B 05 01 00 01", kText), 1, bytesOfHex("0B 05 01 00 01 20")},
      {"length past the end", raw("0B FF 01 07 09", kText + "\0A"s), 1,
       bytesOfHex("0B FF 01 07 20 00 41")},
      {"in the formatted area", raw("0B 20 01 07 00", kText + "\0\0"s), 1,
       bytesOfHex("0B 20 01 07 00 20 00 00")},
      {"without a header", raw("", kText), 1, bytesOfHex("20")},
      {"nothing", {}, 0, {}},
  };
  for (const auto& c : cases) {
    NKRXVEL20::host::SmbiosTable table;
    table.structures = {{c.bytes, 0}};
    EXPECT_EQ(c.count, blankCredentials(table)) << c.what;
    EXPECT_EQ(hexPairs(c.left), hexPairs(table.structures[0].bytes)) << c.what;
  }
}

TEST(Credentials, AllStructuresCount) {
  NKRXVEL20::host::SmbiosTable table;
  table.structures = {{oemStrings({kText, "x"}), 3}, {oemStrings({kBinary}), 0}};
  EXPECT_EQ(2U, blankCredentials(table));
  EXPECT_EQ(oemStrings({" ", "x"}), table.structures[0].bytes);
  EXPECT_EQ(3, table.structures[0].status);
  EXPECT_EQ(oemStrings({" "}), table.structures[1].bytes);
}

}  // namespace
}  // namespace velhost
