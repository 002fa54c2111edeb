// SPDX-License-Identifier: Apache-2.0
#include "plugin/dotcommand.h"

#include <array>
#include <vector>

#include "tests/support/mocksplibrary.h"

namespace spfirmwarevpd {
namespace {

using Bytes = std::vector<unsigned char>;

TEST(DotCommandTest, GoesOutWithItsPathAndNoData) {
  ReplyBuffer buffer{};
  test::MockSPLibrary library;
  EXPECT_CALL(library, sendDotCommand(testing::_, buffer.data(), testing::Pointee(0), 3, 2048))
      .WillOnce([](NKRXVEL20::dotCmd* command, unsigned char*, int* length, int, int) {
        EXPECT_EQ(2, command->type);
        EXPECT_EQ((Bytes{4, 7, 1}), command->command);
        EXPECT_EQ(Bytes{}, command->data);
        *length = 77;
        return true;
      });
  EXPECT_TRUE(sendDotCommand(library, std::array<unsigned char, 3>{4, 7, 1}, buffer.data(), 3));
}

TEST(DotCommandTest, IsSentOnceWhetherItIsAnsweredOrNot) {
  ReplyBuffer buffer{};
  test::MockSPLibrary library;
  EXPECT_CALL(library, sendDotCommand).WillOnce(testing::Return(false));
  EXPECT_FALSE(sendDotCommand(library, std::array<unsigned char, 1>{9}, buffer.data(), 0));
}

}  // namespace
}  // namespace spfirmwarevpd
