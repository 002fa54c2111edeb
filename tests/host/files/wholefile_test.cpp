// SPDX-License-Identifier: Apache-2.0
#include "host/files/wholefile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tests/host/scratchfolder.h"
#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

constexpr ReadFrom kBoth[] = {ReadFrom::kRegularFile, ReadFrom::kFileOrStream};

std::string meaning(int error) { return std::generic_category().message(error); }

class WholeFile : public ScratchFolder {
 protected:
  fs::path node(const std::string& name, mode_t type) const {
    EXPECT_EQ(0, ::mknod((folder_ / name).c_str(), type | 0600U, 0));
    return folder_ / name;
  }

  // Why the file cannot be read; empty when it can.
  std::string refusal(const fs::path& file, ReadFrom from) {
    try {
      readWholeFile(file, from, calls_);
      return "";
    } catch (const FileReadError& error) {
      return error.what();
    }
  }

  long countOf(const std::string& call) const {
    return std::count(calls_.calls.begin(), calls_.calls.end(), call);
  }

  ScriptedFiles calls_;
};

TEST_F(WholeFile, IsReadToItsEndWhateverItsBytes) {
  const std::string text = std::string("a\0b\r\n\xFF", 6) + std::string(200000, 'x');
  put("in", text);
  for (const ReadFrom from : kBoth) EXPECT_EQ(text, readWholeFile(folder_ / "in", from));
}

TEST_F(WholeFile, MayBeEmptyOrBehindALink) {
  put("empty", "");
  put("in", "text");
  fs::create_symlink("in", folder_ / "link");
  for (const ReadFrom from : kBoth) {
    EXPECT_EQ("", readWholeFile(folder_ / "empty", from));
    EXPECT_EQ("text", readWholeFile(folder_ / "link", from));
  }
}

TEST_F(WholeFile, SaysWhyItCannotBeRead) {
  put("file", "");
  const struct {
    fs::path file;
    const char* reason;
  } cases[] = {
      {folder_ / "none", "No such file or directory"},
      {folder_ / "file" / "none", "Not a directory"},
      {folder_ / std::string(256, 'x'), "File name too long"},
  };
  for (const ReadFrom from : kBoth) {
    for (const auto& c : cases) EXPECT_EQ(c.reason, refusal(c.file, from)) << c.file;
  }
}

TEST_F(WholeFile, OfAnotherKindIsRefusedAndNotOpened) {
  const struct {
    fs::path file;
    const char* reason;
    bool isStream;
  } cases[] = {
      {folder_, "it is a folder, not a regular file", false},
      {node("socket", S_IFSOCK), "it is a socket, not a regular file", false},
      {node("fifo", S_IFIFO), "it is a pipe, not a regular file", true},
      {"/dev/zero", "it is a device, not a regular file", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.reason, refusal(c.file, ReadFrom::kRegularFile)) << c.file;
    if (c.isStream) continue;
    EXPECT_EQ(c.reason, refusal(c.file, ReadFrom::kFileOrStream)) << c.file;
  }
  EXPECT_EQ(0, countOf("openat"));
}

TEST_F(WholeFile, OnABlockDeviceIsRefusedAndNotOpened) {
  if (::mknod((folder_ / "disk").c_str(), S_IFBLK | 0600U, 0) != 0) {
    GTEST_SKIP() << "making a device node needs root";
  }
  for (const ReadFrom from : kBoth) {
    EXPECT_EQ("it is a device, not a regular file", refusal(folder_ / "disk", from));
  }
  EXPECT_EQ(0, countOf("openat"));
}

TEST_F(WholeFile, ThatAPersonNamesIsNoDeviceButATerminal) {
  EXPECT_EQ("it is a device, not a regular file", refusal("/dev/zero", ReadFrom::kFileOrStream));
  EXPECT_EQ(0, countOf("read"));

  const Descriptor master(kernelFiles(), ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(0, ::unlockpt(master.get()));
  const std::string text = "typed\n\x04";  // ends with the terminal's end-of-file character
  ASSERT_EQ(static_cast<ssize_t>(text.size()), ::write(master.get(), text.data(), text.size()));
  const std::string terminal = ::ptsname(master.get());
  EXPECT_EQ("typed\n", readWholeFile(terminal, ReadFrom::kFileOrStream));
  EXPECT_EQ("it is a device, not a regular file", refusal(terminal, ReadFrom::kRegularFile));
}

TEST_F(WholeFile, ThatAPersonNamesMayBeAPipe) {
  int ends[2];
  ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
  const Descriptor reading(kernelFiles(), ends[0]);
  Descriptor writing(kernelFiles(), ends[1]);
  ASSERT_EQ(5, ::write(writing.get(), "piped", 5));
  writing.close();
  const std::string name = "/dev/fd/" + std::to_string(reading.get());
  EXPECT_EQ("it is a pipe, not a regular file", refusal(name, ReadFrom::kRegularFile));
  EXPECT_EQ("piped", readWholeFile(name, ReadFrom::kFileOrStream));
}

TEST_F(WholeFile, ThatGivesWayToAPipeIsNotWaitedFor) {
  const fs::path file = put("file", "text");
  calls_.before = [&](const std::string& call) {
    if (call != "openat") return;
    fs::remove(file);
    node("file", S_IFIFO);
  };
  EXPECT_EQ("it is a pipe, not a regular file", refusal(file, ReadFrom::kRegularFile));
  EXPECT_EQ(0, countOf("read"));
}

TEST_F(WholeFile, HasALargestSize) {
  put("large", "");
  const std::uintmax_t largest = std::uintmax_t{64} << 20U;
  fs::resize_file(folder_ / "large", largest);
  EXPECT_EQ(largest, readWholeFile(folder_ / "large", ReadFrom::kRegularFile).size());
  fs::resize_file(folder_ / "large", largest + 1);
  for (const ReadFrom from : kBoth) EXPECT_EQ("File too large", refusal(folder_ / "large", from));
}

TEST_F(WholeFile, IsReadOnAfterAShortReadAndAnInterruptedOne) {
  put("in", "a text");
  calls_.results["read"] = {2, -EINTR, 1};
  EXPECT_EQ("a text", readWholeFile(folder_ / "in", ReadFrom::kRegularFile, calls_));
}

TEST_F(WholeFile, OfStandardInputIsReadToItsEnd) {
  calls_.results["read"] = {-EINTR, 0};
  EXPECT_EQ("", readStandardInput(calls_));
  calls_.results["read"] = {-EIO};
  EXPECT_THROW(readStandardInput(calls_), FileReadError);
  EXPECT_EQ(0, countOf("close"));
}

TEST_F(WholeFile, TellsEachFailureAndLeavesNothingOpen) {
  put("in", "text");
  const struct {
    const char* call;
    std::deque<int> results;
    int error;
  } cases[] = {
      {"fstatat", {-EACCES}, EACCES}, {"fstatat", {0, -EIO}, EIO}, {"openat", {-EMFILE}, EMFILE},
      {"openat", {-EAGAIN}, EAGAIN},  {"read", {-EIO}, EIO},       {"read", {1, -EIO}, EIO},
      {"read", {-EAGAIN}, EAGAIN},
  };
  for (const ReadFrom from : kBoth) {
    for (const auto& c : cases) {
      calls_.calls.clear();
      calls_.results[c.call] = c.results;
      EXPECT_EQ(meaning(c.error), refusal(folder_ / "in", from)) << c.call;
      const bool opened = c.call == std::string("read") || c.results.size() == 2;
      EXPECT_EQ(opened ? 1 : 0, countOf("close")) << c.call;
    }
  }
}

TEST(Descriptor, OneThatIsMovedIsClosedOnce) {
  ScriptedFiles files;
  {
    Descriptor first(files, ::dup(STDIN_FILENO));
    const Descriptor second(std::move(first));
    EXPECT_EQ(-1, first.get());
    EXPECT_LE(0, second.get());
  }
  EXPECT_EQ(std::vector<std::string>{"close"}, files.calls);
}

}  // namespace
}  // namespace velhost
