// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputfile.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "host/text/inputerror.h"
#include "tests/host/scratchfolder.h"
#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

mode_t modeOf(const fs::path& file) {
  struct stat status {};
  EXPECT_EQ(0, ::lstat(file.c_str(), &status)) << file;
  return status.st_mode & 07777U;
}

class Output : public ScratchFolder {
 protected:
  // Why the text cannot be written; empty when it has been.
  std::string refusal(const fs::path& file, FileRules rules = {}) {
    try {
      OutputFile(file, rules, calls_).write("new");
      return "";
    } catch (const InputError& error) {
      return error.what();
    }
  }

  fs::path target() const { return folder_ / "out"; }
  std::string unwritable(const std::string& why) const {
    return target().string() + ": cannot be written: " + why;
  }

  ScriptedFiles calls_;
};

TEST_F(Output, TakesThePlaceOfTheOldOneAtTheEnd) {
  put("out", "old");
  OutputFile file(target());
  EXPECT_EQ("old", contents(target()));
  EXPECT_EQ(Words{"out"}, names());
  file.write("new");
  EXPECT_EQ("new", contents(target()));
  EXPECT_EQ(Words{"out"}, names());
}

TEST_F(Output, HasTheOldOnesPermissionsButNoSetIds) {
  const struct {
    mode_t old;
    mode_t mode;
  } cases[] = {{0600, 0600},  {0644, 0644},  {0444, 0444},
               {04755, 0755}, {02775, 0775}, {01666, 0666}};
  for (const auto& c : cases) {
    put("out", "old");
    ASSERT_EQ(0, ::chmod(target().c_str(), c.old));
    OutputFile(target()).write("new");
    EXPECT_EQ(c.mode, modeOf(target())) << std::oct << c.old;
    fs::remove(target());
  }
}

TEST_F(Output, LetsNobodyWriteBecauseAnotherUsersFileWasThere) {
  if (::geteuid() != 0) GTEST_SKIP() << "making another user's file needs root";
  for (const mode_t old : {0666U, 0620U, 0600U}) {
    put("out", "old");
    ASSERT_EQ(0, ::chown(target().c_str(), 65534, 65534));
    ASSERT_EQ(0, ::chmod(target().c_str(), old));
    OutputFile(target()).write("new");
    EXPECT_EQ(old & ~022U, modeOf(target())) << std::oct << old;
    fs::remove(target());
  }
}

TEST_F(Output, HasTheUmasksPermissionsWhenItIsNew) {
  for (const mode_t mask : {022U, 077U, 0U}) {
    const mode_t before = ::umask(mask);
    OutputFile(target()).write("new");
    ::umask(before);
    EXPECT_EQ(0666U & ~mask, modeOf(target()));
    fs::remove(target());
  }
}

TEST_F(Output, ThatIsPrivateIsTheOwnersAloneAllTheTime) {
  calls_.before = [&](const std::string&) {
    for (const std::string& name : names()) {
      const bool isOld = name == "out" && contents(target()) != "new";
      EXPECT_EQ(isOld ? 0666U : 0600U, modeOf(folder_ / name)) << name;
    }
  };
  const mode_t before = ::umask(0);
  for (const char* const what : {"a fresh one", "over an old one"}) {
    EXPECT_EQ("", refusal(target(), {.isPrivate = true})) << what;
    EXPECT_EQ(0600U, modeOf(target())) << what;
    EXPECT_EQ("new", contents(target())) << what;
    put("out", "old");
    ASSERT_EQ(0, ::chmod(target().c_str(), 0666));
  }
  ::umask(before);
}

TEST_F(Output, IsWrittenWhereASymbolicLinkLeads) {
  put("real", "old");
  fs::create_symlink("real", folder_ / "link");
  fs::create_symlink("fresh", folder_ / "dangling");
  OutputFile(folder_ / "link").write("new");
  OutputFile(folder_ / "dangling").write("new too");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_TRUE(fs::is_symlink(folder_ / "dangling"));
  EXPECT_EQ("new", contents(folder_ / "real"));
  EXPECT_EQ("new too", contents(folder_ / "fresh"));
}

TEST_F(Output, OfAnotherUsersLinkInASharedFolderIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "making another user's link needs root";
  ASSERT_EQ(0, ::chmod(folder_.c_str(), 01777));
  put("real", "old");
  fs::create_symlink("real", target());
  ASSERT_EQ(0, ::lchown(target().c_str(), 65534, 65534));
  EXPECT_EQ(
      unwritable(target().string() + " is another user's, in a folder that everyone may write to"),
      refusal(target()));
  EXPECT_EQ("old", contents(folder_ / "real"));
}

TEST_F(Output, MayHaveTheLongestName) {
  const fs::path file = folder_ / std::string(255, 'x');
  OutputFile(file).write("new");
  OutputFile(file).write("newer");
  EXPECT_EQ("newer", contents(file));
}

TEST_F(Output, IsReplacedByANewFileUnderDevToo) {
  const fs::path shared = "/dev/shm";
  if (::access(shared.c_str(), W_OK) != 0) GTEST_SKIP() << "there is no /dev/shm";
  const fs::path file = shared / folder_.filename();
  std::ofstream(file) << "old";
  OutputFile(file, {.isPrivate = true}).write("new");
  EXPECT_EQ("new", contents(file));
  EXPECT_EQ(0600U, modeOf(file));
  fs::remove(file);
}

TEST_F(Output, ThatSomebodyHasOpenIsAddedTo) {
  put("out", "old ");
  const Descriptor open(kernelFiles(), ::open(target().c_str(), O_WRONLY | O_CLOEXEC));
  const std::string number = std::to_string(open.get());
  OutputFile("/dev/fd/" + number).write("new ");
  OutputFile("/proc/self/fd/" + number, {.isPrivate = true, .mayReplace = false}).write("newer");
  EXPECT_EQ("old new newer", contents(target()));
  EXPECT_EQ(Words{"out"}, names());
}

TEST_F(Output, ThatIsADeviceIsWrittenAsItIs) {
  OutputFile("/dev/null").write("text");
  OutputFile("/dev/null", {.mayReplace = false}).write("text");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_EQ("/dev/full: cannot be written: No space left on device", refusal("/dev/full"));
}

TEST_F(Output, ThatIsAPipeIsWrittenAsItIs) {
  ASSERT_EQ(0, ::mkfifo(target().c_str(), 0600));
  const Descriptor reading(kernelFiles(),
                           ::open(target().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  OutputFile(target()).write("text");
  std::string text(16, '\0');
  ASSERT_EQ(4, ::read(reading.get(), text.data(), text.size()));
  EXPECT_EQ("text", text.substr(0, 4));
  EXPECT_TRUE(fs::is_fifo(target()));
}

TEST_F(Output, ThatMayNotReplaceRefusesWhateverIsThere) {
  put("old", "old");
  fs::create_symlink("nowhere", folder_ / "dangling");
  fs::create_symlink("old", folder_ / "link");
  for (const char* const name : {"old", "dangling", "link"}) {
    EXPECT_EQ((folder_ / name).string() + ": is there already; --force replaces it",
              refusal(folder_ / name, {.mayReplace = false}));
  }
  EXPECT_EQ("old", contents(folder_ / "old"));
  EXPECT_EQ((Words{"dangling", "link", "old"}), names());
}

// Also on a file system that cannot rename without replacing, as NFS.
TEST_F(Output, ThatMayNotReplaceSparesWhatCameMeanwhile) {
  for (const int renamed : {0, -EINVAL, -ENOSYS}) {
    OutputFile file(target(), {.mayReplace = false}, calls_);
    put("out", "faster");
    calls_.results["renameat2"] = {renamed};
    try {
      file.write("new");
      ADD_FAILURE() << renamed;
    } catch (const InputError& error) {
      EXPECT_EQ(target().string() + ": is there already; --force replaces it", error.what());
    }
    EXPECT_EQ("faster", contents(target())) << renamed;
    EXPECT_EQ(Words{"out"}, names()) << renamed;
    fs::remove(target());
  }
}

TEST_F(Output, ThatMayNotReplaceTakesAFreeName) {
  for (const int renamed : {0, -EINVAL, -ENOSYS}) {
    calls_.results["renameat2"] = {renamed};
    EXPECT_EQ("", refusal(target(), {.mayReplace = false})) << renamed;
    EXPECT_EQ("new", contents(target())) << renamed;
    EXPECT_EQ(Words{"out"}, names()) << renamed;
    fs::remove(target());
  }
}

TEST_F(Output, IsRefusedAtOnceWhereItCannotBe) {
  const struct {
    fs::path file;
    const char* reason;
  } cases[] = {
      {folder_ / "none" / "out", "No such file or directory"},
      {folder_, "Is a directory"},
      {folder_ / "", "Is a directory"},
      {folder_ / std::string(256, 'x'), "File name too long"},
  };
  for (const auto& c : cases) {
    try {
      const OutputFile file(c.file);
      ADD_FAILURE() << c.file;
    } catch (const InputError& error) {
      EXPECT_EQ(c.file.string() + ": cannot be written: " + c.reason, error.what());
    }
  }
  EXPECT_EQ("--output needs the name of a file", refusal(""));
}

TEST_F(Output, IsRefusedAtOnceInAFolderThatMayNotBeWritten) {
  calls_.results["faccessat"] = {-EROFS};
  try {
    const OutputFile file(target(), {}, calls_);
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_EQ(unwritable("Read-only file system"), error.what());
  }
}

TEST_F(Output, TriesAnotherNameForWhatIsTaken) {
  calls_.results["openat"] = {0, -EEXIST, -EEXIST};
  EXPECT_EQ("", refusal(target()));
  EXPECT_EQ("new", contents(target()));
  calls_.results["openat"] = {0};
  calls_.results["openat"].insert(calls_.results["openat"].end(), 1000, -EEXIST);
  EXPECT_EQ(unwritable("File exists"), refusal(target()));
}

TEST_F(Output, IsWrittenInPiecesToo) {
  calls_.results["write"] = {1, -EINTR, 1};
  EXPECT_EQ("", refusal(target()));
  EXPECT_EQ("new", contents(target()));
}

// Every call fails in turn: the old file is as it was, nothing else is left, one line says why.
TEST_F(Output, LeavesTheOldFileWhateverFails) {
  for (const bool isPrivate : {false, true}) {
    put("out", "old");
    ScriptedFiles counted;
    OutputFile(target(), {isPrivate}, counted).write("new");
    for (std::size_t i = 0; i < counted.calls.size(); ++i) {
      const std::string& call = counted.calls[i];
      if (call == "fchmod") continue;  // stays private
      put("out", "old");
      ScriptedFiles failing;
      failing.results[call].assign(
          static_cast<std::size_t>(std::count(counted.calls.begin(),
                                              counted.calls.begin() + static_cast<long>(i), call)),
          0);
      failing.results[call].push_back(-EIO);
      const bool isLast = i + 1 == counted.calls.size();  // the folder, when all is done
      try {
        OutputFile(target(), {isPrivate}, failing).write("new");
        EXPECT_TRUE(isLast) << i << call;
      } catch (const InputError& error) {
        EXPECT_EQ(unwritable("Input/output error"), error.what()) << i << call;
        EXPECT_EQ("old", contents(target())) << i << call;
      }
      EXPECT_EQ(Words{"out"}, names()) << i << call;
    }
  }
}

TEST_F(Output, StaysPrivateWhereThereAreNoPermissions) {
  put("out", "old");
  calls_.results["fchmod"] = {-EPERM};
  EXPECT_EQ("", refusal(target()));
  EXPECT_EQ("new", contents(target()));
  EXPECT_EQ(0600U, modeOf(target()));
}

// A signal that comes while the new file is written is answered when it has the final name.
TEST_F(Output, IsWholeWhenASignalEndsTheProgram) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    for (const char* const call : {"openat", "write", "fsync", "renameat2"}) {
      put("out", "old");
      const auto writeInterrupted = [&] {
        OutputFile file(target(), {}, calls_);
        calls_.before = [&](const std::string& made) {
          if (made == call) ::raise(signal);
        };
        file.write("new");
      };
      EXPECT_EXIT(writeInterrupted(), ::testing::KilledBySignal(signal), "") << call;
      EXPECT_EQ("new", contents(target())) << signal << call;
      EXPECT_EQ(Words{"out"}, names()) << signal << call;
    }
  }
}

TEST_F(Output, LeavesNothingWhenItOutgrowsTheLimit) {
  put("out", "old");
  const auto writeTooMuch = [&] {
    const rlimit smallest{1, 1};
    ::setrlimit(RLIMIT_FSIZE, &smallest);
    OutputFile(target()).write("new");
  };
  EXPECT_EXIT(writeTooMuch(), ::testing::KilledBySignal(SIGXFSZ), "");
  EXPECT_EQ("old", contents(target()));
  EXPECT_EQ(Words{"out"}, names());
}

TEST_F(Output, LeavesTheSignalsAsTheyWere) {
  sigset_t before{};
  sigset_t after{};
  ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
  OutputFile(target()).write("new");
  calls_.results["fsync"] = {-EIO};
  EXPECT_NE("", refusal(target()));
  ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int signal = 1; signal < NSIG; ++signal) {
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
  }
}

}  // namespace
}  // namespace velhost
