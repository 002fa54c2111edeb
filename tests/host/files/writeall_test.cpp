// SPDX-License-Identifier: Apache-2.0
#include "host/files/writeall.h"

#include <fcntl.h>

#include <cerrno>

#include "tests/host/scratchfolder.h"
#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

using Words = std::vector<std::string>;
using WriteAll = ScratchFolder;

TEST_F(WriteAll, GoesOnUntilAllIsWritten) {
  const struct {
    const char* what;
    std::deque<int> writes;
    std::deque<int> polls;
    Words calls;
  } cases[] = {
      {"at once", {}, {}, {"write"}},
      {"in pieces", {1, 3}, {}, {"write", "write", "write"}},
      {"interrupted", {-EINTR, 2, -EINTR}, {}, {"write", "write", "write", "write"}},
      {"no room at first", {-EAGAIN}, {}, {"write", "poll", "write"}},
      {"no room behind a piece", {2, -EAGAIN}, {}, {"write", "write", "poll", "write"}},
      {"no room twice", {-EAGAIN, -EAGAIN}, {}, {"write", "poll", "write", "poll", "write"}},
      {"waiting interrupted", {-EAGAIN}, {-EINTR}, {"write", "poll", "write"}},
  };
  for (const auto& c : cases) {
    const auto file = put("out", "");
    ScriptedFiles calls;
    calls.results["write"] = c.writes;
    calls.results["poll"] = c.polls;
    const Descriptor out(kernelFiles(),
                         kernelFiles().openat(AT_FDCWD, file.c_str(), O_WRONLY | O_CLOEXEC, 0));
    EXPECT_EQ(0, writeAll(calls, out.get(), "a text")) << c.what;
    EXPECT_EQ("a text", contents(file)) << c.what;
    EXPECT_EQ(c.calls, calls.calls) << c.what;
  }
}

TEST_F(WriteAll, OfNothingDoesNothing) {
  ScriptedFiles calls;
  EXPECT_EQ(0, writeAll(calls, -1, ""));
  EXPECT_EQ(Words{}, calls.calls);
}

TEST_F(WriteAll, GivesTheErrorThatEndedIt) {
  const struct {
    const char* what;
    std::deque<int> writes;
    std::deque<int> polls;
    int result;
  } cases[] = {
      {"no space", {-ENOSPC}, {}, -ENOSPC},
      {"no space behind a piece", {2, -ENOSPC}, {}, -ENOSPC},
      {"waiting fails", {-EAGAIN}, {-ENOMEM}, -ENOMEM},
  };
  for (const auto& c : cases) {
    const auto file = put("out", "");
    ScriptedFiles calls;
    calls.results["write"] = c.writes;
    calls.results["poll"] = c.polls;
    const Descriptor out(kernelFiles(),
                         kernelFiles().openat(AT_FDCWD, file.c_str(), O_WRONLY | O_CLOEXEC, 0));
    EXPECT_EQ(c.result, writeAll(calls, out.get(), "a text")) << c.what;
  }
}

class TakesNothing : public ScriptedFiles {
 public:
  ssize_t write(int, std::string_view) override { return 0; }
};

TEST_F(WriteAll, DoesNotTryForEver) {
  TakesNothing calls;
  EXPECT_EQ(-EIO, writeAll(calls, -1, "a text"));
}

}  // namespace
}  // namespace velhost
