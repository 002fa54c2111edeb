// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/schemafolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "host/text/inputerror.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

class SchemaBesideProgram : public testing::Test {
 protected:
  SchemaBesideProgram() : kept_(NKRXVEL20::host::currentSchema()) {
    fs::create_directories(program_);
  }
  ~SchemaBesideProgram() override {
    fs::remove_all(root_);
    NKRXVEL20::host::setSchema(kept_);
  }

  void put(const std::string& text) const {
    fs::create_directories(folder_);
    std::ofstream(folder_ / "x.mof") << text;
  }

  // What useSchema complains of; empty when it does not.
  std::string complaint() const {
    try {
      useSchema(program_);
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  }

  NKRXVEL20::host::SchemaPtr kept_;
  fs::path root_ = fs::temp_directory_path() / ("velhost-schema-" + std::to_string(::getpid()));
  fs::path program_ = root_ / "bin";
  fs::path folder_ = root_ / "share" / "vel" / "schema";
};

TEST_F(SchemaBesideProgram, IsFoundBesideTheProgram) {
  put("class A_B {};");
  EXPECT_EQ(folder_, schemaFolder(program_));
  EXPECT_EQ("", complaint());
  EXPECT_NE(nullptr, NKRXVEL20::host::findClass("A_B"));
  EXPECT_EQ(nullptr, NKRXVEL20::host::findClass("KRXSG_Vpd"));
}

TEST_F(SchemaBesideProgram, OneThatIsNotThereIsNamed) {
  EXPECT_EQ("the schema is not beside " + program_.string() + ": there is no " + folder_.string(),
            complaint());
}

TEST_F(SchemaBesideProgram, WhatIsWrongInItIsBadInput) {
  put("class A_B {}");
  EXPECT_EQ((folder_ / "x.mof").string() + ":1:13: ';' is expected, not the end of the file",
            complaint());
  EXPECT_NE(nullptr, NKRXVEL20::host::findClass("KRXSG_Vpd")) << "the schema stays as it was";
}

}  // namespace
}  // namespace velhost
