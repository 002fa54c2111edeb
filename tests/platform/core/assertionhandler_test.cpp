// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <boost/assert.hpp>
#include <boost/shared_ptr.hpp>
#include <functional>
#include <string>

#include "vel/cim.h"
#include "vel/exception.h"

namespace NKRXVEL20 {
namespace {

TEST(AssertionHandler, RaisesTheFrameworksExceptionWithTheExpression) {
  const boost::shared_ptr<ICIMClass> nothing;
  const bool wrong = false;
  const struct {
    const char* what;
    std::function<void()> assertion;
    const char* text;
  } kCases[] = {
      {"a null handle dereferenced", [&] { nothing->CreateInstance(); }, "px != 0"},
      {"a failed assertion", [&] { BOOST_ASSERT(wrong); }, "wrong"},
      {"one with a message", [&] { BOOST_ASSERT_MSG(wrong, "a message"); }, "wrong"},
  };
  for (const auto& c : kCases) {
    try {
      c.assertion();
      ADD_FAILURE() << c.what << ": no exception";
    } catch (const TVELException& e) {
      EXPECT_EQ(1, e.GetCode()) << c.what;
      EXPECT_EQ(std::string(c.text), e.what()) << c.what;
    }
  }
}

}  // namespace
}  // namespace NKRXVEL20
