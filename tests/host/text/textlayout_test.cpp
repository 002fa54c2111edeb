// SPDX-License-Identifier: Apache-2.0
#include "host/text/textlayout.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(TextLayout, ColumnsAreAsWideAsTheirLongestCell) {
  const std::vector<TextRow> rows{{"Name", "Size"}, {"M\xC3\xBCller", "1"}, {"x", ""}};
  EXPECT_EQ(
      "  Name    Size\n"
      "  M\xC3\xBCller  1\n"
      "  x\n",
      alignedColumns(rows));
  EXPECT_EQ(14U, columnsWidth(rows));  // indent 2, "Müller" 6, gap 2, "Size" 4
  EXPECT_EQ("", alignedColumns({}));
}

TEST(TextLayout, ALongListIsWrapped) {
  EXPECT_EQ("No: a, b\n", wrappedList("No:", {"a", "b"}, 2));
  const std::string word(60, 'w');
  EXPECT_EQ("No: " + word + ",\n  " + word + "\n", wrappedList("No:", {word, word}, 2));
}

}  // namespace
}  // namespace velhost
