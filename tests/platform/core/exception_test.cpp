// SPDX-License-Identifier: Apache-2.0
#include "vel/exception.h"

#include <gtest/gtest.h>

namespace NKRXVEL20 {
namespace {

TEST(TVELException, KeepsItsCodeAndText) {
  const TVELException withText(5, "no class X");
  EXPECT_EQ(5, withText.GetCode());
  EXPECT_STREQ("no class X", withText.what());
}

TEST(TVELException, NamesItsCodeWhenThereIsNoText) {
  const TVELException bare(2);
  EXPECT_EQ(2, bare.GetCode());
  EXPECT_STREQ("TVELException, code 2", bare.what());
}

}  // namespace
}  // namespace NKRXVEL20
