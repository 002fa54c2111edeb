// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/requesterror.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "vel/exception.h"

namespace velhost {
namespace {

struct Bare {};

TEST(RequestErrorTest, AnyExceptionIsNamedByItsType) {
  const struct {
    std::function<void()> raise;
    const char* text;
  } cases[] = {
      {[] { throw NKRXVEL20::TVELException(2, "not served"); }, "TVELException code 2: not served"},
      {[] { throw std::runtime_error("broke"); }, "std::runtime_error: broke"},
      {[] { throw std::out_of_range("at"); }, "std::out_of_range: at"},
      {[] { throw 42; }, "int"},
      {[] { throw Bare(); }, "velhost::(anonymous namespace)::Bare"},
  };
  for (const auto& c : cases) {
    try {
      c.raise();
    } catch (...) {
      EXPECT_EQ(c.text, errorText(describeCurrentException()));
    }
  }
}

TEST(RequestErrorTest, OfAPluginThatIsNotThereIsItsTextAlone) {
  EXPECT_EQ("nobody is there", errorText({"TVELException", 2, "nobody is there", false}));
}

}  // namespace
}  // namespace velhost
