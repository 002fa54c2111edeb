// SPDX-License-Identifier: Apache-2.0
#include "host/files/standardstreams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "host/text/inputerror.h"
#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

using Words = std::vector<std::string>;

// A letter a stream: what writing one byte to it gives, "b" for EBADF and "." when it is written.
// What is opened next has the number that comes behind.
std::string streamsAfter(const std::vector<int>& closed) {
  int results[2];
  if (::pipe2(results, O_CLOEXEC) != 0) return "pipe2 failed";
  const Descriptor reading(kernelFiles(), results[0]);
  Descriptor writing(kernelFiles(), results[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    for (const int stream : closed) ::close(stream);
    occupyStandardStreams();
    std::string told;
    for (const int stream : closed) {
      char byte = 'x';
      const bool isRefused = ::write(stream, &byte, 1) < 0 && errno == EBADF &&
                             ::read(stream, &byte, 1) < 0 && errno == EBADF;
      told += isRefused ? 'b' : '.';
    }
    told += ::open("/dev/null", O_RDONLY | O_CLOEXEC) > STDERR_FILENO ? "+" : "-";
    static_cast<void>(!::write(writing.get(), told.data(), told.size()));
    ::_exit(0);
  }
  writing.close();
  std::string told(16, '\0');
  const ssize_t size = kernelFiles().read(reading.get(), told);
  ::waitpid(child, nullptr, 0);
  told.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return told;
}

TEST(StandardStreams, ThatWereClosedAreOccupiedAndStillRefuse) {
  const struct {
    std::vector<int> closed;
    const char* told;
  } cases[] = {
      {{}, "+"},       {{0}, "b+"},     {{1}, "b+"},     {{2}, "b+"},
      {{0, 1}, "bb+"}, {{0, 2}, "bb+"}, {{1, 2}, "bb+"}, {{0, 1, 2}, "bbb+"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.told, streamsAfter(c.closed)) << ::testing::PrintToString(c.closed);
  }
}

TEST(StandardStreams, ThatAreOpenAreLeftAlone) {
  ScriptedFiles calls;
  occupyStandardStreams(calls);
  EXPECT_EQ((Words{"fstatat", "fstatat", "fstatat"}), calls.calls);
}

TEST(StandardStreams, AreOccupiedByWhatCannotBeReadOrWritten) {
  const int next = ::dup(STDERR_FILENO);  // the lowest free number
  ::close(next);
  ScriptedFiles calls;
  calls.results["fstatat"] = {0, -EBADF};
  occupyStandardStreams(calls);
  EXPECT_EQ((Words{"fstatat", "fstatat", "openat", "fstatat"}), calls.calls);
  EXPECT_NE(0, ::fcntl(next, F_GETFL) & O_PATH);
  ::close(next);
}

TEST(StandardStreams, NothingIsWrittenOfNothing) {
  ScriptedFiles calls;
  writeStandardOutput("", calls);
  EXPECT_EQ(Words{}, calls.calls);
}

TEST(StandardStreams, ThatCannotBeOccupiedAreTold) {
  ScriptedFiles calls;
  calls.results["fstatat"] = {0, -EBADF};
  calls.results["openat"] = {-ENFILE};
  try {
    occupyStandardStreams(calls);
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_STREQ("descriptor 1: cannot be occupied: Too many open files in system", error.what());
  }
}

TEST(StandardStreams, StandardOutputSaysWhyItCannotBeWritten) {
  ScriptedFiles calls;
  calls.results["write"] = {-EPIPE};
  try {
    writeStandardOutput("text", calls);
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_STREQ("standard output: cannot be written: Broken pipe", error.what());
  }
}

TEST(StandardStreams, AStandardErrorThatCannotBeWrittenIsNoError) {
  ScriptedFiles calls;
  calls.results["write"] = {-EINTR, -ENOSPC};
  writeStandardError("text", calls);
  EXPECT_EQ((Words{"write", "write"}), calls.calls);
}

}  // namespace
}  // namespace velhost
