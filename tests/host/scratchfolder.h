// SPDX-License-Identifier: Apache-2.0
//
// A folder of the test's own, and what a test puts there and finds there.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace velhost {

class ScratchFolder : public ::testing::Test {
 protected:
  ScratchFolder() : folder_(made()) {}
  ~ScratchFolder() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path put(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name, std::ios::binary) << text;
    return folder_ / name;
  }

  static std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  std::filesystem::path folder_;

 private:
  static std::filesystem::path made() {
    std::string name = (std::filesystem::temp_directory_path() / "velhost-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    return name;
  }
};

}  // namespace velhost
