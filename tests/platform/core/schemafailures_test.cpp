// SPDX-License-Identifier: Apache-2.0
//
// A schema's folder and files that cannot be read for reasons that no test can bring about in a real
// folder: this program defines the calls to the system, and they take the place of the real ones.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>

#include "velhost/schema.h"

namespace {

constexpr int kWhole = 1 << 20;  // a read is given as much as there is

int listError = 0;      // NOLINT: how listing the folder ends; 0: well
int openError = 0;      // NOLINT: of every file; 0: none
std::deque<int> reads;  // NOLINT: for each read at most so many bytes, or an error below 0

template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// By these names the library finds them before the C library's, whatever that makes of the names in
// its headers.
extern "C" {
[[gnu::visibility("default")]] dirent* scriptedReaddir(DIR* folder) __asm__("readdir");
[[gnu::visibility("default")]] int scriptedOpenat(int folder, const char* name, int flags,
                                                  ...) __asm__("openat");
[[gnu::visibility("default")]] ssize_t scriptedRead(int file, void* room,
                                                    std::size_t size) __asm__("read");

dirent* scriptedReaddir(DIR* folder) {
  dirent* const entry = real<dirent*(DIR*)>("readdir")(folder);
  if (entry == nullptr && listError != 0) errno = listError;
  return entry;
}

int scriptedOpenat(int folder, const char* name, int flags, ...) {
  if (openError == 0) return real<int(int, const char*, int, ...)>("openat")(folder, name, flags);
  errno = openError;
  return -1;
}

ssize_t scriptedRead(int file, void* room, std::size_t size) {
  int most = kWhole;
  if (!reads.empty()) {
    most = reads.front();
    reads.pop_front();
  }
  if (most >= 0) {
    return real<ssize_t(int, void*, std::size_t)>("read")(
        file, room, std::min(size, static_cast<std::size_t>(most)));
  }
  errno = -most;
  return -1;
}
}

namespace NKRXVEL20::host {
namespace {

namespace fs = std::filesystem;

class SchemaFailures : public testing::Test {
 protected:
  SchemaFailures() {
    fs::create_directories(folder_);
    std::ofstream(folder_ / "a.mof", std::ios::binary) << "class A_One {};";
    std::ofstream(folder_ / "b.mof", std::ios::binary) << "class B_One {};";
  }
  ~SchemaFailures() override {
    listError = 0;
    openError = 0;
    reads.clear();
    fs::remove_all(folder_);
  }

  // The classes' names, or what is wrong, with the folder's name as FOLDER.
  std::string read() const {
    try {
      std::string names;
      const SchemaPtr schema = readSchema(folder_);
      for (const ClassSchema& cimClass : schema->classes) names += ' ' + std::string(cimClass.name);
      return names;
    } catch (const SchemaError& error) {
      return "FOLDER" + std::string(error.what()).substr(folder_.string().size());
    }
  }

  fs::path folder_ = fs::temp_directory_path() / ("vel-schema-fails-" + std::to_string(::getpid()));
};

TEST_F(SchemaFailures, AFolderThatCannotBeListed) {
  listError = EIO;
  EXPECT_EQ("FOLDER: cannot be read: Input/output error", read());
}

TEST_F(SchemaFailures, AFileThatCannotBeOpened) {
  openError = EACCES;
  EXPECT_EQ("FOLDER/a.mof: cannot be read: Permission denied", read());
}

TEST_F(SchemaFailures, FilesAreReadToTheirEnd) {
  const struct {
    const char* what;
    std::deque<int> reads;
    const char* result;
  } cases[] = {
      {"at once", {}, " A_One B_One"},
      {"a byte at a time", std::deque<int>(30, 1), " A_One B_One"},
      {"interrupted before and inside", {-EINTR, -EINTR, 3, -EINTR}, " A_One B_One"},
      {"refused", {-EIO}, "FOLDER/a.mof: cannot be read: Input/output error"},
      {"refused inside", {3, -EISDIR}, "FOLDER/a.mof: cannot be read: Is a directory"},
      {"refused in the second", {kWhole, -EIO}, "FOLDER/b.mof: cannot be read: Input/output error"},
      {"shorter", {0}, "FOLDER/a.mof: cannot be read: it became shorter meanwhile"},
      {"shorter than it was", {3, 0}, "FOLDER/a.mof: cannot be read: it became shorter meanwhile"},
  };
  for (const auto& c : cases) {
    reads = c.reads;
    EXPECT_EQ(c.result, read()) << c.what;
    reads.clear();
  }
}

}  // namespace
}  // namespace NKRXVEL20::host
