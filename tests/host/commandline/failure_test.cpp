// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/failure.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "host/text/inputerror.h"
#include "velhost/pluginloader.h"

namespace velhost {
namespace {

TEST(Failure, EveryExceptionIsOneLineAndAStatus) {
  const struct {
    std::function<void()> raise;
    ExitStatus status;
    const char* line;
  } cases[] = {
      {[] { throw InputError("bad\ninput"); }, kBadInput, "velhost: bad\\ninput\n"},
      {[] { throw NKRXVEL20::host::PluginLoadError("x: no"); }, kBadInput, "velhost: x: no\n"},
      {[] { throw std::runtime_error("broke"); }, kRefused, "velhost: broke\n"},
      {[] { throw 42; }, kRefused, "velhost: unexpected exception: int\n"},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    try {
      c.raise();
    } catch (...) {
      EXPECT_EQ(c.status, tellFailure()) << c.line;
    }
    EXPECT_EQ(c.line, testing::internal::GetCapturedStderr());
  }
}

}  // namespace
}  // namespace velhost
