// SPDX-License-Identifier: Apache-2.0
//
// Every call for a file fails with every error that it documents, once and with all of its name
// behind it, and takes or gives one byte at a time. What is to be written is whole or was not
// touched, one line says why, and nothing stays open or behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <set>
#include <system_error>

#include "host/files/outputfile.h"
#include "host/files/standardstreams.h"
#include "host/files/wholefile.h"
#include "host/text/inputerror.h"
#include "tests/host/scratchfolder.h"
#include "tests/host/scriptedfiles.h"
#include "tests/sweep/errnos.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using velhost::ScratchFolder;
using velhost::ScriptedFiles;

constexpr int kShortCount = 1;
constexpr std::size_t kOftener = 200;  // "from then on": no file takes as many tries

// The calls, with those that matter told apart, and what stays open.
class SweptFiles : public ScriptedFiles {
 public:
  int openat(int folder, const char* name, int flags, mode_t mode) override {
    const int file = ScriptedFiles::openat(folder, name, flags, mode);
    if (file >= 0) open_.insert(file);
    if (file >= 0 && (flags & (O_WRONLY | O_APPEND)) != 0) written_.insert(file);
    return file;
  }
  int close(int file) override {
    open_.erase(file);
    const int result = ScriptedFiles::close(file);
    if (written_.erase(file) > 0) writtenCloses.insert(calls.size() - 1);
    return result;
  }

  std::size_t stillOpen() const { return open_.size(); }
  std::set<std::size_t> writtenCloses;  // their places among the calls: some losses show there only

 private:
  std::set<int> open_;
  std::set<int> written_;
};

std::string message(int error) { return std::generic_category().message(error); }

// A deed with files, and what it says of an error.
struct Deed {
  const char* name;
  std::function<void()> prepare;
  std::function<void(SweptFiles&)> perform;
  std::function<std::string(int error)> refusal;
  std::function<bool()> isDone;                           // whole
  std::function<bool(const std::string& call)> isIntact;  // as it was, when that failed
  std::string refusalOfName = {};  // when the file's name is taken; empty: as of other errors
};

struct FileFault {
  std::size_t place;  // among the calls of the deed
  std::string call;
  int error;
  bool fromThenOn;
};

std::ostream& operator<<(std::ostream& out, const FileFault& fault) {
  return out << fault.call << " (call " << fault.place << "): " << message(fault.error)
             << (fault.fromThenOn ? ", and all behind it" : "");
}

class FilesSweep : public ScratchFolder {
 protected:
  void TearDown() override {
    std::cout << "faults tried: " << tried_ << '\n';
    RecordProperty("faults", std::to_string(tried_));
    EXPECT_GT(tried_, 0U);
  }

  // What happens beyond the one line, where something does.
  using GoesOn = std::function<bool(const FileFault&, const SweptFiles& plain)>;

  void sweep(const Deed& deed, const GoesOn& goesOn) {
    deed.prepare();
    SweptFiles plain;
    deed.perform(plain);
    ASSERT_TRUE(deed.isDone()) << deed.name;
    for (std::size_t place = 0; place < plain.calls.size(); ++place) {
      const std::string& call = plain.calls[place];
      for (const int error : documentedErrors().at(call)) {
        for (const bool fromThenOn : {false, true}) {
          tryFault(deed, {place, call, error, fromThenOn}, plain, goesOn);
        }
      }
      if (call == "read" || call == "write") tryShort(deed, place, plain);
    }
  }

  void tryFault(const Deed& deed, const FileFault& fault, const SweptFiles& plain,
                const GoesOn& goesOn) {
    ++tried_;
    deed.prepare();
    SweptFiles failing;
    script(failing, fault.place, plain, -fault.error, fault.fromThenOn ? kOftener : 1);
    const std::string said = refusalOf(deed, failing);
    const bool isDone = goesOn(fault, plain);
    EXPECT_EQ(isDone ? "" : refusalFor(deed, fault), said) << deed.name << ", " << fault;
    EXPECT_TRUE(isDone ? deed.isDone() : deed.isIntact(fault.call)) << deed.name << ", " << fault;
    expectTidy(deed, failing, fault.call == "unlinkat");
  }

  static std::string refusalFor(const Deed& deed, const FileFault& fault) {
    const bool isName = fault.call == "renameat2" || fault.call == "linkat";
    if (isName && fault.error == EEXIST && !deed.refusalOfName.empty()) return deed.refusalOfName;
    return deed.refusal(fault.error);
  }

  void tryShort(const Deed& deed, std::size_t place, const SweptFiles& plain) {
    for (const std::size_t times : {std::size_t{1}, kOftener}) {
      ++tried_;
      deed.prepare();
      SweptFiles shortened;
      script(shortened, place, plain, kShortCount, times);
      EXPECT_EQ("", refusalOf(deed, shortened)) << deed.name << ", short at " << place;
      EXPECT_TRUE(deed.isDone()) << deed.name << ", short at " << place;
      expectTidy(deed, shortened, false);
    }
  }

  // The call at the place, counted among those of its name.
  static void script(SweptFiles& files, std::size_t place, const SweptFiles& plain, int result,
                     std::size_t times) {
    const std::string& call = plain.calls[place];
    const auto end = plain.calls.begin() + static_cast<std::ptrdiff_t>(place);
    auto& results = files.results[call];
    results.insert(results.begin(),
                   static_cast<std::size_t>(std::count(plain.calls.begin(), end, call)), 0);
    results.insert(results.end(), times, result);
  }

  static std::string refusalOf(const Deed& deed, SweptFiles& files) {
    try {
      deed.perform(files);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  void expectTidy(const Deed& deed, const SweptFiles& files, bool mayLeaveName) {
    EXPECT_EQ(0U, files.stillOpen()) << deed.name;
    const auto left = std::ranges::count_if(
        names(), [](const std::string& name) { return name.starts_with(".velhost-"); });
    EXPECT_TRUE(left == 0 || mayLeaveName) << deed.name;
    for (const std::string& name : names()) {
      if (name.starts_with(".velhost-")) fs::remove(folder_ / name);
    }
  }

  fs::path target() const { return folder_ / "out"; }
  std::string unwritable(int error) const {
    return target().string() + ": cannot be written: " + message(error);
  }
  bool holds(const std::string& text) const {
    return fs::exists(target()) && contents(target()) == text;
  }

  Deed written(const char* name, velhost::FileRules rules, bool isThere) {
    return {name,
            [this, isThere] {
              fs::remove(target());
              if (isThere) put("out", "old");
            },
            [this, rules](SweptFiles& files) {
              velhost::OutputFile(target(), rules, files).write("new");
            },
            [this](int error) { return unwritable(error); },
            [this] { return holds("new"); },
            [this, isThere](const std::string&) {
              return isThere ? holds("old") : !fs::exists(target());
            }};
  }

  unsigned tried_ = 0;
};

// How many calls of that name came before.
std::size_t ordinal(const FileFault& fault, const SweptFiles& plain) {
  const auto end = plain.calls.begin() + static_cast<std::ptrdiff_t>(fault.place);
  return static_cast<std::size_t>(std::count(plain.calls.begin(), end, fault.call));
}

// What a write survives, whatever it goes to.
bool writeGoesOn(const FileFault& fault, const SweptFiles& plain) {
  if (fault.call == "write") return fault.error == EINTR || fault.error == EAGAIN;
  if (fault.call == "poll") return fault.error == EINTR;
  // A file that was only looked at has nothing to lose.
  return fault.call == "close" && !fault.fromThenOn && !plain.writtenCloses.contains(fault.place);
}

// From then on, a close that counts fails too.
bool isHarmlessClose(const FileFault& fault, const SweptFiles& plain) {
  return fault.call == "close" &&
         (plain.writtenCloses.empty() || fault.place > *plain.writtenCloses.rbegin());
}

bool replacingGoesOn(const FileFault& fault, const SweptFiles& plain) {
  if (fault.call == "fchmod") return true;                            // as private as it was made
  if (fault.call == "fstatat" && fault.error == ENOENT) return true;  // nothing there: a new one
  // Another name for the new file is tried, not for ever.
  if (fault.call == "openat" && fault.error == EEXIST) {
    return ordinal(fault, plain) == 1 && !fault.fromThenOn;
  }
  return writeGoesOn(fault, plain) || isHarmlessClose(fault, plain);
}

TEST_F(FilesSweep, AFileThatIsReplaced) {
  sweep(written("replaced", {}, true), replacingGoesOn);
  sweep(written("replaced by a private one", {.isPrivate = true}, true), replacingGoesOn);
}

TEST_F(FilesSweep, AFileThatIsNew) {
  sweep(written("new", {}, false), replacingGoesOn);
  sweep(written("new and private", {.isPrivate = true}, false), replacingGoesOn);
}

std::string taken(const fs::path& file) {
  return file.string() + ": is there already; --force replaces it";
}

TEST_F(FilesSweep, AFileThatMayNotReplace) {
  Deed deed = written("not replacing", {.mayReplace = false}, false);
  deed.refusalOfName = taken(target());
  // Without the flag for it, a link takes the name.
  sweep(deed, [](const FileFault& fault, const SweptFiles& plain) {
    if (fault.call == "renameat2") return fault.error == EINVAL || fault.error == ENOSYS;
    return replacingGoesOn(fault, plain);
  });
}

// On a file system that cannot rename without replacing.
TEST_F(FilesSweep, AFileThatMayNotReplaceByALink) {
  Deed deed = written("linked", {.mayReplace = false}, false);
  deed.refusalOfName = taken(target());
  deed.perform = [perform = deed.perform](SweptFiles& files) {
    files.results["renameat2"] = {-EINVAL};
    perform(files);
  };
  sweep(deed, [](const FileFault& fault, const SweptFiles& plain) {
    // Its first name stays beside the other one.
    const bool isAnyway = fault.call == "renameat2" || fault.call == "unlinkat";
    return isAnyway || replacingGoesOn(fault, plain);
  });
}

TEST_F(FilesSweep, AFileBehindALink) {
  Deed deed = written("behind a link", {}, true);
  deed.prepare = [this] {
    fs::remove(target());
    put("real", "old");
    fs::create_symlink("real", target());
  };
  // A link that is gone is a new file's name; so is the file where it led.
  sweep(deed, [](const FileFault& fault, const SweptFiles& plain) {
    if (fault.call == "fstatat" && fault.error == ENOENT) {
      return ordinal(fault, plain) != 1;
    }
    if (fault.call == "openat" && fault.error == EEXIST) {
      return ordinal(fault, plain) == 2 && !fault.fromThenOn;
    }
    return replacingGoesOn(fault, plain);
  });
}

TEST_F(FilesSweep, WhatSomebodyHasOpen) {
  int file = -1;
  Deed deed = written("open already", {}, true);
  deed.prepare = [&, this] {
    put("out", "");
    if (file >= 0) ::close(file);
    file = ::open(target().c_str(), O_WRONLY | O_CLOEXEC);
  };
  std::string name;
  deed.perform = [&](SweptFiles& files) {
    name = "/dev/fd/" + std::to_string(file);
    velhost::OutputFile(name, {}, files).write("new");
  };
  deed.refusal = [&](int error) { return name + ": cannot be written: " + message(error); };
  // What was written stays when the close tells that it may not be all.
  deed.isIntact = [this](const std::string& call) { return holds(call == "close" ? "new" : ""); };
  sweep(deed, [&](const FileFault& fault, const SweptFiles& plain) {
    return writeGoesOn(fault, plain) || isHarmlessClose(fault, plain);
  });
  ::close(file);
}

TEST_F(FilesSweep, StandardOutput) {
  int file = -1;
  struct Redirected : SweptFiles {
    explicit Redirected(SweptFiles& target, int to) : target_(target), to_(to) {}
    ssize_t write(int, std::string_view bytes) override { return target_.write(to_, bytes); }
    int poll(pollfd& waited) override { return target_.poll(waited); }
    SweptFiles& target_;
    int to_;
  };
  Deed deed = written("standard output", {}, true);
  deed.prepare = [&, this] {
    put("out", "");
    if (file >= 0) ::close(file);
    file = ::open(target().c_str(), O_WRONLY | O_CLOEXEC);
  };
  deed.perform = [&](SweptFiles& files) {
    Redirected redirected(files, file);
    velhost::writeStandardOutput("new", redirected);
  };
  deed.refusal = [](int error) { return "standard output: cannot be written: " + message(error); };
  deed.isIntact = [this](const std::string&) { return holds(""); };
  sweep(deed, writeGoesOn);
  ::close(file);
}

TEST_F(FilesSweep, AFileThatIsRead) {
  put("in", "text");
  std::string text;
  for (const auto from : {velhost::ReadFrom::kRegularFile, velhost::ReadFrom::kFileOrStream}) {
    const Deed deed = {
        "read",
        [&] { text.clear(); },
        [&](SweptFiles& files) { text = velhost::readWholeFile(folder_ / "in", from, files); },
        message,
        [&] { return text == "text"; },
        [&](const std::string&) { return text.empty(); }};
    sweep(deed, [](const FileFault& fault, const SweptFiles&) {
      return (fault.call == "read" && fault.error == EINTR) || fault.call == "close";
    });
  }
}

TEST_F(FilesSweep, ClosedStandardStreams) {
  for (const int stream : {0, 1, 2}) {
    for (const int error : documentedErrors().at("openat")) {
      ++tried_;
      ScriptedFiles files;
      files.results["fstatat"].assign(static_cast<std::size_t>(stream), 0);
      files.results["fstatat"].push_back(-EBADF);
      files.results["openat"] = {-error};
      try {
        velhost::occupyStandardStreams(files);
        ADD_FAILURE() << stream << message(error);
      } catch (const velhost::InputError& refusal) {
        EXPECT_EQ(
            "descriptor " + std::to_string(stream) + ": cannot be occupied: " + message(error),
            refusal.what());
      }
    }
  }
}

}  // namespace
}  // namespace sweep
