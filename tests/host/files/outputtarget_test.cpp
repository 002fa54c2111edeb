// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputtarget.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "host/text/inputerror.h"
#include "tests/host/scratchfolder.h"
#include "tests/host/scriptedfiles.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kStranger = 65534;  // nobody

class FoundTarget : public ScratchFolder {
 protected:
  std::string refusal(const fs::path& file) {
    try {
      findOutputTarget(calls_, file);
      return "";
    } catch (const InputError& error) {
      return error.what();
    }
  }

  // What was found, with the folder's name behind the scratch folder's.
  std::string found(const fs::path& file) {
    const OutputTarget target = findOutputTarget(calls_, file);
    const fs::path folder =
        fs::read_symlink("/proc/self/fd/" + std::to_string(target.folder.get()));
    std::string text = (folder.lexically_relative(folder_) / target.name).string();
    if (!target.status) text += ", not there";
    if (target.status && S_ISDIR(target.status->st_mode)) text += ", folder";
    if (target.isLinked) text += ", linked";
    if (target.isOpenFile) text += ", open";
    return text;
  }

  void link(const std::string& name, const fs::path& to) const {
    fs::create_symlink(to, folder_ / name);
  }

  ScriptedFiles calls_;
};

TEST_F(FoundTarget, IsWhereTheLinksLead) {
  put("file", "");
  fs::create_directory(folder_ / "sub");
  link("link", "file");
  link("linklink", folder_ / "link");
  link("dangling", "sub/none");
  link("sub/up", "../file");
  link("away", "sub");
  link("slash", "sub/");
  const struct {
    const char* name;
    const char* found;
  } cases[] = {
      {"file", "./file"},
      {"none", "./none, not there"},
      {"sub/none", "sub/none, not there"},
      {"link", "./file, linked"},
      {"linklink", "./file, linked"},
      {"dangling", "sub/none, not there, linked"},
      {"sub/up", "./file, linked"},
      {"away/up", "./file, linked"},
      {"away/none", "sub/none, not there"},
      {"sub", "./sub, folder"},
      {"sub/", "sub/., folder"},
      {"sub/..", "sub/.., folder"},
      {"slash", "sub/., folder, linked"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.found, found(folder_ / c.name)) << c.name;
}

TEST_F(FoundTarget, IsInTheFolderOneIsIn) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_);
  EXPECT_EQ("./none, not there", found("none"));
  EXPECT_EQ("./none, not there", found("./none"));
  fs::current_path(before);
}

TEST_F(FoundTarget, IsAnOpenFileBehindALinkOfProc) {
  const fs::path file = put("file", "");
  const Descriptor open(kernelFiles(), ::open(file.c_str(), O_WRONLY | O_CLOEXEC));
  const std::string number = std::to_string(open.get());
  link("mine", "/dev/fd/" + number);
  for (const fs::path& name : {fs::path("/dev/fd/" + number), fs::path("/proc/self/fd/" + number),
                               fs::path("/dev/stdout"), folder_ / "mine"}) {
    const OutputTarget target = findOutputTarget(calls_, name);
    EXPECT_TRUE(target.isOpenFile) << name;
  }
}

TEST_F(FoundTarget, IsRefusedWithTheReason) {
  put("file", "");
  link("loop", "loop");
  const struct {
    const char* name;
    const char* reason;
  } cases[] = {
      {"no/out", "No such file or directory"},
      {"file/out", "Not a directory"},
      {"loop", "Too many levels of symbolic links"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ((folder_ / c.name).string() + ": cannot be written: " + c.reason,
              refusal(folder_ / c.name));
  }
}

TEST_F(FoundTarget, TellsEachFailure) {
  put("file", "");
  link("link", "file");
  for (const char* const call : {"openat", "fstatat", "fstatfs", "readlinkat"}) {
    calls_.results[call] = {-EACCES};
    EXPECT_EQ((folder_ / "link").string() + ": cannot be written: Permission denied",
              refusal(folder_ / "link"))
        << call;
  }
}

// Whose the folder is, whose the link in it, and whether everyone may write there.
TEST_F(FoundTarget, IsNotWhereAStrangersLinkInASharedFolderLeads) {
  if (::geteuid() != 0) GTEST_SKIP() << "making another user's link needs root";
  put("file", "");
  const struct {
    const char* what;
    mode_t mode;
    uid_t folderOwner;
    uid_t linkOwner;
    bool isFollowed;
  } cases[] = {
      {"ours in a shared folder", 01777, 0, 0, true},
      {"ours in a stranger's shared folder", 01777, kStranger, 0, true},
      {"the folder's owner's", 01777, kStranger, kStranger, true},
      {"a stranger's in a shared folder", 01777, 0, kStranger, false},
      {"a stranger's in another's shared folder", 01777, kStranger - 1, kStranger, false},
      {"a stranger's, not sticky", 0777, 0, kStranger, true},
      {"a stranger's, only the group may write", 01770, 0, kStranger, true},
  };
  for (const auto& c : cases) {
    const fs::path shared = folder_ / "shared";
    fs::create_directory(shared);
    link("shared/link", "../file");
    ASSERT_EQ(0, ::lchown((shared / "link").c_str(), c.linkOwner, 0));
    ASSERT_EQ(0, ::chown(shared.c_str(), c.folderOwner, 0));
    ASSERT_EQ(0, ::chmod(shared.c_str(), c.mode));
    const std::string name = (shared / "link").string();
    EXPECT_EQ(c.isFollowed ? ""
                           : name + ": cannot be written: " + name +
                                 " is another user's, in a folder that everyone may write to",
              refusal(name))
        << c.what;
    link("ours", name);  // on the way there the rule is the same
    EXPECT_EQ(c.isFollowed, refusal(folder_ / "ours").empty()) << c.what;
    fs::remove(folder_ / "ours");
    fs::remove_all(shared);
  }
}

TEST_F(FoundTarget, IsNoStrangersPipeInASharedFolder) {
  if (::geteuid() != 0) GTEST_SKIP() << "making another user's pipe needs root";
  ASSERT_EQ(0, ::chmod(folder_.c_str(), 01777));
  const struct {
    const char* name;
    mode_t type;
    uid_t owner;
    bool isFound;
  } cases[] = {
      {"ours", S_IFIFO, 0, true},
      {"pipe", S_IFIFO, kStranger, false},
      {"socket", S_IFSOCK, kStranger, false},
      {"regular", S_IFREG, kStranger, true},  // it will be replaced
  };
  for (const auto& c : cases) {
    const fs::path name = folder_ / c.name;
    ASSERT_EQ(0, ::mknod(name.c_str(), c.type | 0666U, 0)) << c.name;
    ASSERT_EQ(0, ::chown(name.c_str(), c.owner, 0)) << c.name;
    EXPECT_EQ(c.isFound, refusal(name).empty()) << c.name;
  }
}

}  // namespace
}  // namespace velhost
