// SPDX-License-Identifier: Apache-2.0
#include "platform/spdriver/printmatrix.h"

#include <gtest/gtest.h>

#include <vector>

namespace NKRXVEL20::host {
namespace {

const std::vector<unsigned char> kSeventeen = {'P', '1', ' ', '~', 0x00, 0x1F, 0x7F, 0x80, 0xFF,
                                               'a', 'b', 'c', 'd', 'e',  'f',  'g',  'h'};
const char kSeventeenText[] =
    "0000: 50 31 20 7E 00 1F 7F 80 FF 61 62 63 64 65 66 67  P1 ~.....abcdefg\n"
    "0010: 68                                               h\n";

TEST(MatrixText, SixteenBytesALine) {
  EXPECT_EQ(matrixText({}), "");
  EXPECT_EQ(matrixText(kSeventeen), kSeventeenText);
}

TEST(PrintMatrixToStderr, PrintsTheLength) {
  const struct {
    int length;
    const char* expected;
  } cases[] = {
      {17, kSeventeenText},
      {1, "0000: 50                                               P\n"},
      {0, ""},
      {-1, ""},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    printMatrixToStderr(kSeventeen.data(), c.length);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expected) << c.length;
  }
}

}  // namespace
}  // namespace NKRXVEL20::host
