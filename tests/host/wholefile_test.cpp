// SPDX-License-Identifier: Apache-2.0
#include "host/wholefile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <system_error>

#include "host/inputerror.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

class WholeFile : public ::testing::Test {
 protected:
  WholeFile()
      : folder_(fs::temp_directory_path() / ("velhost-wholefile-" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
  }
  ~WholeFile() override { fs::remove_all(folder_); }

  void put(const fs::path& file, const std::string& text) const { std::ofstream(file) << text; }
  std::ptrdiff_t fileCount() const {
    return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
  }

  fs::path folder_;
};

TEST_F(WholeFile, IsReadToItsEndWhateverItsBytes) {
  const std::string text = std::string("a\0b\r\n\xFF", 6) + std::string(200000, 'x');
  put(folder_ / "in", text);
  EXPECT_EQ(text, readWholeFile(folder_ / "in"));
}

TEST_F(WholeFile, SaysWhyItCannotBeRead) {
  const struct {
    fs::path file;
    std::errc reason;
  } cases[] = {
      {folder_ / "none", std::errc::no_such_file_or_directory},
      {folder_, std::errc::is_a_directory},
      {"/dev/zero", std::errc::file_too_large},
  };
  for (const auto& c : cases) {
    try {
      readWholeFile(c.file);
      ADD_FAILURE() << c.file;
    } catch (const std::system_error& error) {
      EXPECT_EQ(c.reason, error.code()) << c.file;
    }
  }
}

TEST_F(WholeFile, TakesThePlaceOfTheOldOneAtTheEnd) {
  const fs::path target = folder_ / "out";
  put(target, "old");
  fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
  OutputFile file(target);
  EXPECT_EQ("old", readWholeFile(target));
  file.write("new");
  EXPECT_EQ("new", readWholeFile(target));
  EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(target).permissions());
  EXPECT_EQ(1, fileCount());
}

TEST_F(WholeFile, LeavesNothingBehindWhenItIsNotWritten) {
  { const OutputFile file(folder_ / "out"); }
  EXPECT_EQ(0, fileCount());
}

TEST_F(WholeFile, WritesWhereASymbolicLinkLeads) {
  put(folder_ / "real", "old");
  fs::create_symlink("real", folder_ / "link");
  OutputFile(folder_ / "link").write("new");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ("new", readWholeFile(folder_ / "real"));
}

TEST_F(WholeFile, APrivateFileIsTheOwnersAlone) {
  const fs::perms ownersAlone = fs::perms::owner_read | fs::perms::owner_write;
  const fs::path target = folder_ / "out";
  for (const char* const text : {"new", "over an old one"}) {
    OutputFile(target, {.isPrivate = true}).write(text);
    EXPECT_EQ(ownersAlone, fs::status(target).permissions()) << text;
    EXPECT_EQ(text, readWholeFile(target));
    fs::permissions(target, fs::perms::others_read, fs::perm_options::add);
  }
}

TEST_F(WholeFile, ThatMayNotReplaceRefusesWhateverIsThere) {
  put(folder_ / "old", "old");
  fs::create_symlink("nowhere", folder_ / "dangling");
  fs::create_symlink("old", folder_ / "link");
  for (const char* const name : {"old", "dangling", "link"}) {
    const fs::path target = folder_ / name;
    try {
      const OutputFile file(target, {.mayReplace = false});
      ADD_FAILURE() << name;
    } catch (const InputError& error) {
      EXPECT_EQ(target.string() + ": is there already; --force replaces it", error.what());
    }
  }
  EXPECT_EQ("old", readWholeFile(folder_ / "old"));
  EXPECT_EQ(3, fileCount());
}

TEST_F(WholeFile, ThatMayNotReplaceSparesWhatCameMeanwhile) {
  const fs::path target = folder_ / "out";
  {
    OutputFile file(target, {.mayReplace = false});
    put(target, "faster");
    EXPECT_THROW(file.write("new"), InputError);
  }
  EXPECT_EQ("faster", readWholeFile(target));
  EXPECT_EQ(1, fileCount());
  fs::remove(target);
  OutputFile(target, {.mayReplace = false}).write("new");
  EXPECT_EQ("new", readWholeFile(target));
  EXPECT_EQ(1, fileCount());
}

TEST_F(WholeFile, ThatMayNotReplaceStillWritesDevices) {
  OutputFile("/dev/null", {.mayReplace = false}).write("text");
}

TEST_F(WholeFile, ADeviceIsWrittenAsItIs) {
  OutputFile("/dev/null").write("text");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_THROW(OutputFile("/dev/full").write("text"), InputError);
}

TEST_F(WholeFile, AFolderThatIsNotThereIsBadInput) {
  try {
    const OutputFile file(folder_ / "none" / "out");
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_EQ(
        (folder_ / "none" / "out").string() + ": cannot be written: No such file or directory",
        error.what());
  }
}

}  // namespace
}  // namespace velhost
