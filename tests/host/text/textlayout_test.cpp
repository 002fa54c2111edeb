// SPDX-License-Identifier: Apache-2.0
#include "host/text/textlayout.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(TextLayout, ColumnsAreAsWideAsTheirWidestCell) {
  const std::vector<TextRow> rows{{"Name", "Size"}, {"M\xC3\xBCller", "1"}, {"x", ""}};
  EXPECT_EQ(
      "  Name    Size\n"
      "  M\xC3\xBCller  1\n"
      "  x\n",
      alignedColumns(rows));
  EXPECT_EQ(2U, columnsWidth({}));
  EXPECT_EQ(14U, columnsWidth(rows));  // indent 2, "Müller" 6, gap 2, "Size" 4
  EXPECT_EQ("", alignedColumns({}));
}

TEST(TextLayout, AParagraphStaysInsideTheWidth) {
  EXPECT_EQ("    one two\n    three four\n", paragraph("one two three four", 4, 16));
  EXPECT_EQ(" one\n two\n", paragraph("one two", 4, 4));  // little room, little indent
  EXPECT_EQ("o\nn\ne\n", paragraph("one", 4, 1));
  EXPECT_EQ("\n", paragraph("", 0, 10));
}

TEST(TextLayout, AListIsBrokenBetweenItsItems) {
  EXPECT_EQ("  all:  Name UEFI, Vendor KRX\n",
            listLines("  all:  ", {"Name UEFI", "Vendor KRX"}, 40));
  EXPECT_EQ(
      "  all:  Name UEFI, Vendor KRX,\n"
      "        Version 1\n",
      listLines("  all:  ", {"Name UEFI", "Vendor KRX", "Version 1"}, 34));
  EXPECT_EQ(
      "  all:  One,\n"
      "        Name System BIOS of the\n"
      "        machine\n",
      listLines("  all:  ", {"One", "Name System BIOS of the machine"}, 32));
}

TEST(TextLayout, ALeadThatIsTooLongStandsByItself) {
  EXPECT_EQ("  all:\n    one, two\n", listLines("  all:  ", {"one", "two"}, 16));
}

TEST(TextLayout, AHeadingIsBold) {
  const Screen coloured{.width = 20, .hasColour = true};
  EXPECT_EQ("\x1B[1mKRXSG_Vpd\x1B[0m  of a\nmachine\n",
            heading("KRXSG_Vpd", "  of a machine", coloured));
  EXPECT_EQ("KRXSG_Vpd  of a\nmachine\n", heading("KRXSG_Vpd", "  of a machine", {.width = 20}));
  EXPECT_EQ("KRXS\nG_Vp\nd\n", heading("KRXSG_Vpd", "", {.width = 4, .hasColour = true}));
}

const std::vector<Remark> kRemarks{
    {{{"A", Style::kPlain}, {"unused", Style::kPlain}}, "nobody fills it"},
    {{{"Class", Style::kPlain}, {"failed", Style::kRed}}, ""},
};

TEST(TextLayout, RemarksAreInColumns) {
  EXPECT_EQ(
      "  A      unused  nobody fills it\n"
      "  Class  failed\n",
      remarks(kRemarks, {}));
  EXPECT_EQ(
      "  A      unused  nobody\n"
      "                 fills it\n"
      "  Class  failed\n",
      remarks(kRemarks, {.width = 26}));
  EXPECT_EQ(
      "  A      unused  nobody fills it\n"
      "  Class  \x1B[31m"
      "failed\x1B[0m\n",
      remarks(kRemarks, {.hasColour = true}));
  EXPECT_EQ("", remarks({}, {}));
}

TEST(TextLayout, RemarksWithoutRoomAreBelow) {
  EXPECT_EQ(
      "  A unused\n"
      "    nobody fills\n"
      "    it\n"
      "  Class failed\n",
      remarks(kRemarks, {.width = 17}));
}

}  // namespace
}  // namespace velhost
