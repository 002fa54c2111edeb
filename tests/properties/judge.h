// SPDX-License-Identifier: Apache-2.0
//
// The witnesses that share no code with the program: judge.py, asked over a pipe.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace velhost::properties {

class Judge {
 public:
  Judge();
  ~Judge();

  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  // What the witness of that name finds wrong with the files, by their names without ".json"; empty
  // where it is content.
  std::string complaint(const std::string& witness,
                        const std::vector<std::pair<std::string, std::string>>& files);

  // The one of this program.
  static Judge& instance();

 private:
  void put(const std::string& name, const std::string& text) const;

  std::filesystem::path folder_;
  pid_t process_ = 0;
  std::FILE* questions_ = nullptr;
  std::FILE* verdicts_ = nullptr;
};

}  // namespace velhost::properties
