// SPDX-License-Identifier: Apache-2.0
#include "host/wholefile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <system_error>

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

}  // namespace
}  // namespace velhost
