// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

namespace fs = std::filesystem;

class SchemaFolder : public testing::Test {
 protected:
  SchemaFolder() { fs::create_directories(folder_); }
  ~SchemaFolder() override { fs::remove_all(folder_); }

  void put(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  // The classes' names, or what is wrong, with the folder's name as FOLDER.
  std::string read() const {
    try {
      std::string names;
      const SchemaPtr schema = readSchema(folder_);
      for (const ClassSchema& cimClass : schema->classes) {
        names += ' ' + std::string(cimClass.name);
      }
      return names;
    } catch (const SchemaError& error) {
      std::string what = error.what();
      EXPECT_EQ(0U, what.find(folder_.string()));
      return "FOLDER" + what.substr(folder_.string().size());
    }
  }

  fs::path folder_ = fs::temp_directory_path() / ("vel-schema-" + std::to_string(::getpid()));
};

TEST_F(SchemaFolder, ItsFilesAreReadInTheOrderOfTheirNames) {
  put("20-b.mof", "class B_One : A_One {};");
  put("10-a.mof", "class A_One {}; class A_Two {};");
  put("mine.mof", "class C_One {};");
  put("empty.mof", "");
  put("30-c.mof.orig", "nonsense");
  put("README", "nonsense");
  EXPECT_EQ(" A_One A_Two B_One C_One", read());
}

TEST_F(SchemaFolder, AnErrorNamesItsFile) {
  put("10-a.mof", "class A_One {};\n");
  put("20-b.mof", "\nclass B_One {\n");
  EXPECT_EQ("FOLDER/20-b.mof:3:1: a property or '}' is expected, not the end of the file", read());
}

TEST_F(SchemaFolder, WithoutAFileIsRefused) {
  EXPECT_EQ("FOLDER: has no .mof file", read());
  fs::remove(folder_);
  EXPECT_EQ("FOLDER: cannot be read: No such file or directory", read());
}

TEST_F(SchemaFolder, WhatIsNoFileIsRefused) {
  fs::create_directory(folder_ / "a.mof");
  EXPECT_EQ("FOLDER/a.mof: cannot be read: it is no regular file", read());
  fs::remove(folder_ / "a.mof");
  fs::create_symlink("nowhere", folder_ / "a.mof");
  EXPECT_EQ("FOLDER/a.mof: cannot be read: No such file or directory", read());
}

TEST_F(SchemaFolder, AFileThatIsTooLargeIsRefused) {
  put("a.mof", "");
  fs::resize_file(folder_ / "a.mof", (4U << 20U) + 1);
  EXPECT_EQ("FOLDER/a.mof: cannot be read: it is larger than 4 MiB", read());
}

}  // namespace
}  // namespace NKRXVEL20::host
